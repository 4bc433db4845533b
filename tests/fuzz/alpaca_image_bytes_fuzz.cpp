// Pictures in the binary form, as an Alpaca camera may send them.
#include "fuzz/input.h"
#include "hosts/alpaca/image_bytes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel::hosts::alpaca;
    try {
        parseImageBytes(vantrel::fuzz::textOf(data, size), {300, 200});
    } catch (const std::runtime_error&) {  // what is no picture, or holds an error, gets
    }
    return 0;
}
