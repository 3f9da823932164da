#include "Cli.h"

#include <android-base/file.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <errno.h>
#include <string.h>

#include <optional>
#include <string_view>

#include "Arguments.h"
#include "Operation.h"

namespace perfctl {
namespace {

using ::aidl::vendor::vyren::hardware::performance::IPerformance;

constexpr char kSynopsis[] =
    "usage: perfctl [--service INSTANCE] OPERATION [ARG...]\n"
    "       perfctl [--service INSTANCE] --dump [ARG...]\n"
    "       perfctl --list\n"
    "       perfctl --help\n";

std::string DefaultInstance() {
    return std::string(IPerformance::descriptor) + "/default";
}

std::string HelpText() {
    return std::string(kSynopsis) +
           "\n"
           "Calls one operation of IPerformance and prints its result.\n"
           "\n"
           "  --service INSTANCE  the service instance to call, by default\n"
           "                      " +
           DefaultInstance() +
           "\n"
           "  --list              print every operation, one per line, in slot order:\n"
           "                        SLOT NAME(TYPE, ...) -> RESULT\n"
           "                      e.g. \"0 addAcmDirName(String, long) -> int\"\n"
           "  --dump [ARG...]     have the service write its state to stdout\n"
           "\n"
           "Each argument is one word: String as it stands; int and long in decimal;\n"
           "boolean as true, false, 1 or 0; int[] as comma-separated decimals, with an empty\n"
           "word for an empty list.\n"
           "\n"
           "A String result is printed as its exact bytes; int, long and boolean results in\n"
           "decimal or as true or false, followed by a newline; a parcelable as one line of\n"
           "JSON; void prints nothing.\n"
           "\n"
           "Exit status: 0 when the call succeeds, 1 when it fails (no service, a failed\n"
           "transaction or an exception), 2 for a usage error.\n";
}

// Keeps a failure report on one line whatever the status text holds.
std::string OneLine(std::string text) {
    for (char& c : text) {
        if (c == '\n' || c == '\r') c = ' ';
    }
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text;
}

// "a long", "an int[]".
std::string WithArticle(std::string_view noun) {
    const bool vowel = !noun.empty() && std::string_view("aeiou").find(noun[0]) != noun.npos;
    return (vowel ? "an " : "a ") + std::string(noun);
}

int UsageError(std::ostream& err, const std::string& message, const std::string& usage) {
    err << "perfctl: " << message << "\n" << usage;
    return kExitUsage;
}

int UsageError(std::ostream& err, const std::string& message, const Operation& op) {
    return UsageError(err, message, "usage: perfctl " + Signature(op) + "\n");
}

bool WriteOut(int fd, const std::string& text, std::ostream& err) {
    if (android::base::WriteFully(fd, text.data(), text.size())) return true;
    err << "perfctl: cannot write the output: " << strerror(errno) << "\n";
    return false;
}

ndk::SpAIBinder GetService(const std::string& instance, std::ostream& err) {
    ndk::SpAIBinder binder(AServiceManager_checkService(instance.c_str()));
    if (binder.get() == nullptr) err << "perfctl: service " << instance << " is not running\n";
    return binder;
}

int List(int outFd, std::ostream& err) {
    std::string text;
    for (const Operation& op : Operations()) {
        text += ListLine(op);
        text += '\n';
    }
    return WriteOut(outFd, text, err) ? kExitOk : kExitCallFailed;
}

int Dump(const std::string& instance, const std::vector<std::string>& words, int outFd,
         std::ostream& err) {
    ndk::SpAIBinder binder = GetService(instance, err);
    if (binder.get() == nullptr) return kExitCallFailed;
    std::vector<const char*> args;
    for (const std::string& word : words) args.push_back(word.c_str());
    const binder_status_t status =
        AIBinder_dump(binder.get(), outFd, args.data(), static_cast<uint32_t>(args.size()));
    if (status != STATUS_OK) {
        err << "perfctl: dump of " << instance
            << " failed: " << OneLine(ndk::ScopedAStatus::fromStatus(status).getDescription())
            << "\n";
        return kExitCallFailed;
    }
    return kExitOk;
}

int Call(const std::string& instance, const Operation& op, const std::vector<std::string>& words,
         int outFd, std::ostream& err) {
    if (words.size() != op.argCount) {
        return UsageError(err,
                          std::string(op.name) + " takes " + std::to_string(op.argCount) +
                              (op.argCount == 1 ? " argument" : " arguments") + ", got " +
                              std::to_string(words.size()),
                          op);
    }
    std::vector<Value> values;
    for (size_t i = 0; i < words.size(); ++i) {
        std::optional<Value> value = ParseArgument(op.args[i], words[i]);
        if (!value) {
            const std::string argument =
                std::string(op.name) + ": argument " + std::to_string(i + 1);
            // Bytes that are not UTF-8 are not echoed back to the terminal.
            return UsageError(err,
                              op.args[i] == ArgType::kString
                                  ? argument + " is not valid UTF-8"
                                  : argument + " is not " + WithArticle(ArgTypeName(op.args[i])) +
                                        ": \"" + words[i] + "\"",
                              op);
        }
        values.push_back(std::move(*value));
    }

    ndk::SpAIBinder binder = GetService(instance, err);
    if (binder.get() == nullptr) return kExitCallFailed;
    std::shared_ptr<IPerformance> service = IPerformance::fromBinder(binder);
    if (service == nullptr) {
        err << "perfctl: service " << instance << " is not an " << IPerformance::descriptor << "\n";
        return kExitCallFailed;
    }

    std::string out;
    const ndk::ScopedAStatus status = op.call(*service, values, &out);
    if (!status.isOk()) {
        err << "perfctl: " << op.name << " failed: " << OneLine(status.getDescription()) << "\n";
        return kExitCallFailed;
    }
    return WriteOut(outFd, out, err) ? kExitOk : kExitCallFailed;
}

}  // namespace

int Run(const std::vector<std::string>& args, int outFd, std::ostream& err) {
    std::string instance = DefaultInstance();
    size_t next = 0;
    // Options come first; after the operation every word is an argument, "-1" included.
    for (; next < args.size() && !args[next].empty() && args[next][0] == '-'; ++next) {
        const std::string& option = args[next];
        if (option == "--service") {
            if (next + 1 == args.size()) {
                return UsageError(err, "--service needs an instance name", kSynopsis);
            }
            instance = args[++next];
        } else if (option == "--list") {
            if (next + 1 != args.size()) {
                return UsageError(err, "--list takes no arguments", kSynopsis);
            }
            return List(outFd, err);
        } else if (option == "--dump") {
            return Dump(instance, {args.begin() + next + 1, args.end()}, outFd, err);
        } else if (option == "--help" || option == "-h") {
            return WriteOut(outFd, HelpText(), err) ? kExitOk : kExitCallFailed;
        } else {
            return UsageError(err, "unknown option " + option, kSynopsis);
        }
    }
    if (next == args.size()) return UsageError(err, "no operation given", kSynopsis);

    const Operation* op = FindOperation(args[next]);
    if (op == nullptr) {
        return UsageError(
            err, "unknown operation " + args[next] + " (perfctl --list shows them all)", kSynopsis);
    }
    return Call(instance, *op, {args.begin() + next + 1, args.end()}, outFd, err);
}

}  // namespace perfctl
