// args.cpp - option and operand handling shared by every subcommand.
#include "args.h"

#include <cerrno>
#include <cstdlib>

namespace cli {

void Fail(const std::string& message, int status) {
    throw Failure{message, status};
}

bool Args::WantsHelp() {
    return TakeFlag("--help", "-h");
}

std::vector<std::string> Args::TakeAll(const std::string& name) {
    std::vector<std::string> values;
    for (size_t i = 0; i < words_.size();) {
        const std::string& w = words_[i];
        if (w == name) {
            if (i + 1 == words_.size()) Fail(command_ + ": " + name + " needs a value");
            values.push_back(words_[i + 1]);
            words_.erase(words_.begin() + long(i), words_.begin() + long(i) + 2);
        } else if (w.compare(0, name.size() + 1, name + "=") == 0) {
            values.push_back(w.substr(name.size() + 1));
            words_.erase(words_.begin() + long(i));
        } else if (w == "--") {
            break;
        } else {
            ++i;
        }
    }
    return values;
}

std::string Args::Take(const std::string& name, const std::string& fallback) {
    std::vector<std::string> all = TakeAll(name);
    return all.empty() ? fallback : all.back();
}

bool Args::TakeFlag(const std::string& name, const std::string& shortName) {
    bool found = false;
    for (size_t i = 0; i < words_.size();) {
        if (words_[i] == "--") break;
        if (words_[i] == name || (!shortName.empty() && words_[i] == shortName)) {
            words_.erase(words_.begin() + long(i));
            found = true;
        } else {
            ++i;
        }
    }
    return found;
}

std::vector<std::string> Args::Operands(size_t min, size_t max) {
    std::vector<std::string> operands;
    bool onlyOperands = false;
    for (const std::string& w : words_) {
        if (!onlyOperands && w == "--") {
            onlyOperands = true;
        } else if (!onlyOperands && w.size() > 1 && w[0] == '-') {
            Fail(command_ + ": unknown option " + w + " (see --help)");
        } else {
            operands.push_back(w);
        }
    }
    if (operands.size() < min) Fail(command_ + ": too few arguments (see --help)");
    if (operands.size() > max) Fail(command_ + ": too many arguments (see --help)");
    return operands;
}

long long ParseNumber(const std::string& text, const std::string& what, long long min,
                      long long max) {
    char* end = nullptr;
    errno = 0;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno == ERANGE || value < min || value > max)
        Fail(what + " must be a whole number from " + std::to_string(min) + " to " +
             std::to_string(max) + ", not '" + text + "'");
    return value;
}

} // namespace cli
