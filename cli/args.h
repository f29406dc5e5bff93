// args.h - the command line of one subcommand: its words, its options, and
// the one-line errors and exit statuses every subcommand shares.
#ifndef VETRA_CLI_ARGS_H
#define VETRA_CLI_ARGS_H

#include <string>
#include <vector>

namespace cli {

/// Exit statuses: 0 the command did what was asked (for `check`: every
/// file is well-formed), 1 the answer is no (not well-formed, nothing
/// matched, a write failed), 2 the command could not run (bad arguments,
/// an unreadable file).
enum Status { kOk = 0, kNo = 1, kUsage = 2 };

/// Thrown for a bad command line or an unusable input; main prints
/// "vetra: <message>" and exits with `status`.
struct Failure {
    std::string message;
    int status;
};

[[noreturn]] void Fail(const std::string& message, int status = kUsage);

/// The words that follow a subcommand's name.
class Args {
  public:
    Args(std::vector<std::string> words, std::string command)
        : words_(std::move(words)), command_(std::move(command)) {}

    /// True, and the word removed, if `-h` or `--help` is among the words.
    bool WantsHelp();
    /// The value of every `--name VALUE` or `--name=VALUE`, removed from the
    /// words, in order.
    std::vector<std::string> TakeAll(const std::string& name);
    /// The value of the last `--name`, or `fallback`.
    std::string Take(const std::string& name, const std::string& fallback);
    /// True, and the flag removed, if `--name` (or `short`) is among the words.
    bool TakeFlag(const std::string& name, const std::string& shortName = "");
    /// The words left, after an error for any left option. Fails unless
    /// there are between `min` and `max` of them.
    std::vector<std::string> Operands(size_t min, size_t max);

    const std::string& command() const { return command_; }

  private:
    std::vector<std::string> words_;
    std::string command_;
};

/// A whole number in [min, max], or a usage failure that names `what`.
long long ParseNumber(const std::string& text, const std::string& what, long long min,
                      long long max);

} // namespace cli

#endif // VETRA_CLI_ARGS_H
