#!/usr/bin/env bash
# Runs the vetra command on small files and checks its output and exit
# status. Usage: cli_test.sh path/to/vetra
set -uo pipefail
vetra=$(realpath "$1")
source_tree=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
failures=0

# expect STATUS EXPECTED-OUTPUT COMMAND...: stdout and stderr together.
expect() {
  local want_status=$1 want=$2
  shift 2
  local got status
  got=$("$vetra" "$@" 2>&1)
  status=$?
  if [[ $status != "$want_status" || $got != "$want" ]]; then
    echo "FAIL: vetra $*"
    echo "  status $status (want $want_status)"
    diff <(echo "$want") <(echo "$got") | sed 's/^/  /'
    failures=$((failures + 1))
  fi
}

printf '<?xml version="1.0"?>\n<catalog>\n <book id="1" lang="en">Dune</book>\n <book id="2">Emma &amp; co</book>\n</catalog>\n' >good.xml
printf '<a>\n <b x="1">t</c>\n</a>' >bad.xml
printf '<a>caf\xe9</a>' >latin1.xml

expect 0 "good.xml: well-formed" xml check good.xml
expect 1 "good.xml: well-formed
bad.xml: not well-formed
bad.xml:2:12: lone_end_tag (c)
bad.xml:2:2: unended_start_tag (b)" xml check good.xml bad.xml
expect 2 "vetra: missing.xml: No such file or directory" xml check -q good.xml missing.xml
expect 0 "Dune
Emma & co" xml get good.xml catalog/book
expect 0 "1
2" xml get good.xml /catalog/*/ @id
expect 0 "en" xml get good.xml catalog/book @lang
expect 1 "" xml get good.xml catalog/film
expect 2 "vetra: the path 'catalog/book[1]' may hold only element names and '*'" \
  xml get good.xml 'catalog/book[1]'
expect 2 "vetra: xml get: too few arguments (see --help)" xml get good.xml
expect 2 "vetra: xml check: unknown option --fast (see --help)" xml check --fast good.xml
expect 2 "vetra: unknown command 'xml frob' (see vetra --help)" xml frob

# An edit changes the bytes it must and no others.
cp good.xml edited.xml
expect 0 "edited.xml: 2 elements edited" xml set edited.xml catalog/book @lang='fr & de'
sed 's/lang="en"/lang="fr \&amp; de"/; s/id="2"/id="2" lang="fr \&amp; de"/' good.xml >want.xml
cmp -s want.xml edited.xml || { echo "FAIL: set changed more than the attribute"; failures=$((failures + 1)); }
expect 1 "vetra: edited.xml: nothing matches 'catalog/film'" xml set edited.xml catalog/film =x
cp latin1.xml kept.xml
expect 1 "vetra: kept.xml: saving would change bytes outside the edit (its encoding doesn't round-trip); nothing written" \
  xml set kept.xml a =x
cmp -s latin1.xml kept.xml || { echo "FAIL: a refused set changed the file"; failures=$((failures + 1)); }

# Converting declares the new encoding, and the bytes follow it.
printf '<a>caf\xc3\xa9 \xe4\xb8\xad</a>' >mixed.xml
expect 1 "vetra: mixed.xml: some characters can't be written in windows-1252 (--allow-loss writes '?' for them); nothing written" \
  xml convert mixed.xml out.xml --encoding windows-1252
[[ -e out.xml ]] && { echo "FAIL: a refused convert wrote its output"; failures=$((failures + 1)); }
expect 0 "" xml convert mixed.xml out.xml --encoding windows-1252 --allow-loss
[[ $(cat out.xml) == $(printf '<?xml version="1.0" encoding="windows-1252"?>\n<a>caf\xe9 ?</a>') ]] ||
  { echo "FAIL: convert to windows-1252 wrote $(od -c out.xml | head -3)"; failures=$((failures + 1)); }
expect 0 "" xml convert good.xml utf16.xml --encoding UTF-16
[[ $(head -c 2 utf16.xml | od -An -tx1) == " ff fe" ]] || { echo "FAIL: UTF-16 without its mark"; failures=$((failures + 1)); }
expect 0 "Dune
Emma & co" xml get utf16.xml catalog/book

# The other commands, on what this machine has.
expect 0 "1.2.3.4" version "$source_tree/fuzz/corpus/pe_version/pe64_version_last"
expect 1 "vetra: /bin/sh: no version resource (not a readable Windows executable or DLL with one)" \
  version /bin/sh
"$vetra" ip | grep -q "^first local address: " || { echo "FAIL: vetra ip"; failures=$((failures + 1)); }
[[ $("$vetra" cpu --count 1 --interval 0.5 | wc -l) == 2 ]] || { echo "FAIL: vetra cpu"; failures=$((failures + 1)); }
expect 2 "vetra: --interval must be a number of seconds from 0.5 to 3600, not '0'" cpu --interval 0

if ((failures > 0)); then
  echo "$failures failure(s)"
  exit 1
fi
echo "cli: all cases passed"
