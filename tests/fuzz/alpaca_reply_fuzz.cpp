// What an Alpaca server may answer: the first byte chooses the status and the kind of content.
#include "fuzz/input.h"
#include "hosts/alpaca/device_error.h"
#include "hosts/alpaca/device_record.h"
#include "hosts/alpaca/discovery.h"
#include "hosts/alpaca/reply.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel::hosts::alpaca;
    if (size == 0) return 0;
    constexpr int kStatus[] = {200, 200, 200, 200, 400, 404, 500, 302};
    constexpr const char* kType[] = {"application/json", "text/plain", "text/html", ""};
    const std::string body(vantrel::fuzz::textOf(data + 1, size - 1));
    const vantrel::platform::HttpAnswer answer{kStatus[data[0] % 8], kType[data[0] / 8 % 4], body};
    portIn(body);
    parseServerAddress(body);
    for (const Expects expects : {Expects::kValue, Expects::kNothing}) try {
            const Json value = valueOf(answer, expects, 12, "server");
            devicesIn(value, {"server", 1});
            namedValuesIn(value);
        } catch (const std::runtime_error&) {  // every refusal is one of these
        }
    return 0;
}
