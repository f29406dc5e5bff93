// commands.h - every subcommand of the vetra command, each with its help.
#ifndef VETRA_CLI_COMMANDS_H
#define VETRA_CLI_COMMANDS_H

#include "args.h"

namespace cli {

/// One subcommand: `words` are the words of its name ("xml check"), the
/// summary is the line of the overview, `help` the text of its --help.
struct Command {
    const char* words;
    const char* usage;
    const char* summary;
    const char* help;
    int (*run)(Args& args);
};

int RunXmlCheck(Args& args);
int RunXmlGet(Args& args);
int RunXmlSet(Args& args);
int RunXmlConvert(Args& args);
int RunCpu(Args& args);
int RunIp(Args& args);
int RunVersion(Args& args);

} // namespace cli

#endif // VETRA_CLI_COMMANDS_H
