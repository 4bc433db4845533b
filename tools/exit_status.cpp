#include "exit_status.h"

#include <cstdio>
#include <exception>

namespace vantrel::tools {

int exitStatusOf(const char* program, const std::function<int()>& work) {
    try {
        return work();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s: %s\n", program, e.what());
        return 2;
    }
}

}  // namespace vantrel::tools
