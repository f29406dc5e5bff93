// main.cpp - the vetra command: finds the subcommand in the table, prints
// help at every level, and turns failures into one-line messages and exit
// statuses.
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "commands.h"

namespace cli {
namespace {

const Command kCommands[] = {
    {"xml check", "xml check [-q] [-v] FILE...", "is each file well-formed, and what was repaired",
     "Loads each FILE (any encoding: byte-order mark, declaration, or UTF-8 detection) and\n"
     "prints whether it is well-formed, then each problem the parser met as\n"
     "FILE:LINE:COLUMN: key (tag name), the line and column counted in characters.\n"
     "The library's log keeps about 1000 characters, so a badly broken file shows\n"
     "its first problems only.\n\n"
     "  -q, --quiet    print nothing for a well-formed file\n"
     "  -v, --verbose  also print how the file was read (encoding, length, mark)\n\n"
     "Exit status: 0 if every file is well-formed, 1 if one is not, 2 if one can't be read.",
     RunXmlCheck},
    {"xml get", "xml get FILE PATH [@ATTR]", "print the data or an attribute of matching elements",
     "Prints, one a line, the data (or the attribute ATTR) of every element that PATH\n"
     "leads to. PATH is element names from the root, separated by '/', '*' for any\n"
     "name: catalog/book. Elements without ATTR are skipped.\n\n"
     "Exit status: 0 if something was printed, 1 if nothing matched, 2 on errors.",
     RunXmlGet},
    {"xml set", "xml set FILE PATH (@ATTR=VALUE | =DATA)", "edit matching elements in place",
     "Sets the attribute ATTR, or replaces the data, of every element that PATH leads\n"
     "to (PATH as for 'xml get'), and saves FILE. Every byte outside the edits stays\n"
     "as it was: a file whose encoding would not come back byte for byte is refused,\n"
     "and the old file is replaced only when the new one is complete.\n\n"
     "Exit status: 0 if the file was edited, 1 if nothing matched or it can't be saved,\n"
     "2 on errors.",
     RunXmlSet},
    {"xml convert", "xml convert IN OUT --encoding NAME [--bom] [--allow-loss]",
     "re-encode a document",
     "Writes IN to OUT in the encoding NAME (windows-1252, Shift_JIS, UTF-16, ...), with\n"
     "its XML declaration naming it (updated, or added in front). UTF-16 files get a\n"
     "byte-order mark; --bom gives UTF-8 one too. A name the library doesn't know\n"
     "stands for the system's default code page, as it does in a declaration.\n\n"
     "  --allow-loss  write '?' for characters NAME can't hold (otherwise refused)\n\n"
     "Exit status: 0 if OUT was written, 1 if not, 2 on errors.",
     RunXmlConvert},
    {"cpu", "cpu [--pid N]... [--thread TID]... [--interval S] [--count N]",
     "CPU usage of the machine and of processes, once an interval",
     "Prints a line of CPU figures in percent every S seconds (default 1, at least 0.5),\n"
     "N times (default: until interrupted). system% is the busy share of all cores,\n"
     "0 to 100; a process or thread figure is its CPU time against wall-clock time,\n"
     "not divided by the number of cores (a process busy on two cores reads 200).\n"
     "The first line comes after about a second, when the monitor has two readings.\n\n"
     "  --pid N       watch process N (repeatable)\n"
     "  --thread TID  watch thread TID (repeatable)\n\n"
     "Exit status: 0, or 2 for bad arguments or a process that can't be watched.",
     RunCpu},
    {"ip", "ip", "the machine's IPv4 interfaces, addresses and routes",
     "Prints the machine's IPv4 snapshot: interfaces (index order), addresses and\n"
     "main-table routes (sorted by destination, mask, metric), the default gateway,\n"
     "and the address the library picks as the machine's first local one: that of\n"
     "the connected interface with a default route of the best metric (then the most\n"
     "traffic), preferring a permanent address over one handed out by DHCP.\n\n"
     "Exit status: 0.",
     RunIp},
    {"version", "version FILE", "the file version of a Windows executable or DLL",
     "Prints the file version (major.minor.build.revision) from the version resource\n"
     "of a 32- or 64-bit Windows executable or DLL, read by the library itself.\n\n"
     "Exit status: 0, or 1 if FILE has no version resource that can be read.",
     RunVersion},
};

void PrintOverview(FILE* to) {
    std::fprintf(to, "usage: vetra COMMAND [ARGS]   (vetra COMMAND --help for more)\n\n"
                     "commands:\n");
    for (const Command& c : kCommands)
        std::fprintf(to, "  %-58s %s\n", c.usage, c.summary);
}

// The commands whose words begin with `prefix` (a group such as "xml").
bool PrintGroup(FILE* to, const std::string& prefix) {
    bool any = false;
    for (const Command& c : kCommands) {
        if (std::strncmp(c.words, prefix.c_str(), prefix.size()) != 0 ||
            c.words[prefix.size()] != ' ')
            continue;
        if (!any)
            std::fprintf(to, "usage: vetra %s SUBCOMMAND [ARGS]\n\nsubcommands:\n", prefix.c_str());
        std::fprintf(to, "  %-58s %s\n", c.usage, c.summary);
        any = true;
    }
    return any;
}

int Run(std::vector<std::string> words) {
    if (words.empty()) {
        PrintOverview(stderr);
        return kUsage;
    }
    if (words[0] == "--help" || words[0] == "-h" || words[0] == "help") {
        PrintOverview(stdout);
        return kOk;
    }
    if (words[0] == "--version") {
        std::printf("vetra %s\n", VETRA_VERSION);
        return kOk;
    }
    // The longest run of leading words that names a command.
    for (const Command& c : kCommands) {
        std::string name;
        for (size_t n = 0; n < words.size(); ++n) {
            name += (n ? " " : "") + words[n];
            if (name != c.words) continue;
            Args args(std::vector<std::string>(words.begin() + long(n) + 1, words.end()), name);
            if (args.WantsHelp()) {
                std::printf("usage: vetra %s\n\n%s\n", c.usage, c.help);
                return kOk;
            }
            return c.run(args);
        }
    }
    // A group alone ("vetra xml") lists its subcommands.
    const bool asked = words.size() > 1 && (words[1] == "--help" || words[1] == "-h");
    if ((words.size() == 1 || asked) && PrintGroup(asked ? stdout : stderr, words[0]))
        return asked ? kOk : kUsage;
    std::string tried = words[0];
    if (words.size() > 1 && words[1].compare(0, 1, "-") != 0) tried += " " + words[1];
    Fail("unknown command '" + tried + "' (see vetra --help)");
}

} // namespace
} // namespace cli

int main(int argc, char** argv) {
    try {
        return cli::Run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const cli::Failure& f) {
        std::fprintf(stderr, "vetra: %s\n", f.message.c_str());
        return f.status;
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "vetra: out of memory\n");
        return cli::kNo;
    }
}
