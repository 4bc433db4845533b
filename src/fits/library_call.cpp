#include "fits/library_call.h"

#include <new>

#include "fits/fits_error.h"

namespace vantrel::fits {

void guardedLibraryCall(const std::filesystem::path& path, const GuardLimits& limits,
                        const std::function<void()>& call) {
    const auto inOwnProcess = [&] {
        try {
            call();
        } catch (const std::bad_alloc&) {
            failFits(path, kTooMuchMemory);
        }
        return std::string();
    };
    try {
        callGuarded(limits, inOwnProcess);
    } catch (const GuardedCallFailed& e) {
        throw FitsError(e.what());
    } catch (const GuardedCallTookTooLong&) {
        failFits(path, "takes longer to read than an image of its size does");
    } catch (const GuardedCallCrashed&) {
        failFits(path, "the library that reads it crashed");
    }
}

}  // namespace vantrel::fits
