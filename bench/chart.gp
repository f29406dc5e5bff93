# chart.gp - draws results/chart.png from the chart data that summarize.py
# writes: per work and corpus, each library's time as a multiple of
# pugixml's (log scale; below 1 is faster than pugixml).
# Usage: gnuplot -e "data='chart.dat'; out='chart.png'" chart.gp
set terminal pngcairo size 1600,800 font ",10"
set output out
set title "Time relative to pugixml (lower is faster; log scale)"
set datafile missing "-"
set style data histograms
set style histogram clustered gap 1
set style fill solid 0.85 border -1
set boxwidth 0.9
set logscale y
set format y "%g"
set grid ytics
set ylabel "time / pugixml time"
set xtics rotate by -35 left noenhanced
set key top left noenhanced
set arrow from graph 0, first 1 to graph 1, first 1 nohead dashtype 2 lw 1.5
plot for [i=2:7] data using i:xtic(1) title columnheader(i)
