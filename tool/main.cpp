#include <csignal>
#include <cstdio>
#include <new>

#include "kit/section/section.h"
#include "tool/arguments.h"
#include "tool/commands.h"
#include "tool/output.h"

// Whatever goes wrong ends here, as a line on the error stream and an exit status.
int main(int count, char** arguments) {
    using namespace velquor;
    std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is an error of writing
    try {
        return command_of(count, arguments)();
    } catch (const Misuse& error) {
        std::fprintf(stderr, "velquor: %s\n", error.what());
        return REFUSED;
    } catch (const Error&) {
        const Failure fault = failure();
        complain("", fault);
        return fault.status;
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "velquor: memory could not be had\n");
    } catch (const ReaderLeft&) {
        std::signal(SIGPIPE, SIG_DFL);  // quietly, and for those who look at how it ended
        std::raise(SIGPIPE);
    } catch (const CannotWrite& error) {
        std::fprintf(stderr, "velquor: %s\n", error.what());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "velquor: internal error: %s\n", error.what());
    } catch (...) {
        std::fprintf(stderr, "velquor: internal error\n");
    }
    return INTERNAL;
}
