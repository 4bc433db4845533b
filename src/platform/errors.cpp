#include "platform/errors.h"

#include <array>
#include <utility>

#include "platform/text.h"

namespace vantrel::platform {

OperationError runTimeError(int number) {
    using namespace error_number;
    static constexpr std::array<std::pair<int, const char*>, 10> kDescriptions{{
        {kInvalidProcedureCall, "Invalid procedure call or argument"},
        {kOverflow, "Overflow"},
        {kSubscriptOutOfRange, "Subscript out of range"},
        {kDivisionByZero, "Division by zero"},
        {kTypeMismatch, "Type mismatch"},
        {kInternal, "Internal error"},
        {kFileNotFound, "File not found"},
        {kNoObject, "Object variable or With block variable not set"},
        {kCannotCreateObject, "ActiveX component can't create object"},
        {kNoSuchMember, "Object doesn't support this property or method"},
    }};
    for (const auto& [known, description] : kDescriptions)
        if (known == number) return {number, "Vantrel", description};
    return {number, "Vantrel", "Application-defined or object-defined error"};
}

OperationError currentError() {
    try {
        throw;
    } catch (const OperationError& error) {
        return error;
    } catch (const std::exception& error) {
        return {error_number::kInternal, "Vantrel", error.what()};
    } catch (...) {
        return runTimeError(error_number::kInternal);
    }
}

std::string errorReport(const OperationError& error, const std::string& label) {
    return "Error " + std::to_string(error.number()) + ": " + error.description() + kCrLf + label;
}

std::string sourcedErrorReport(const OperationError& error, const std::string& label) {
    return error.source() + " " + errorReport(error, label);
}

}  // namespace vantrel::platform
