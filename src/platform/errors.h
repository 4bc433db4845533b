// Failures as operators of automation programs know them: a number, a source and a description.
//
// Everything that can fail in Vantrel throws an OperationError (or the more specific AutomationError). A
// procedure that talks to the outside catches everything and asks currentError() what happened.
#pragma once

#include <stdexcept>
#include <string>

namespace vantrel::platform {

class OperationError : public std::runtime_error {
  public:
    OperationError(int number, std::string source, const std::string& description)
        : std::runtime_error(description), number_(number), source_(std::move(source)) {}

    int number() const { return number_; }
    const std::string& source() const { return source_; }
    std::string description() const { return what(); }

  private:
    int number_;
    std::string source_;
};

/// A failure raised by, or on the way to, an outside program.
class AutomationError : public OperationError {
  public:
    using OperationError::OperationError;
};

/// The numbers of run-time failures inside Vantrel's own procedures.
namespace error_number {
inline constexpr int kInvalidProcedureCall = 5;
inline constexpr int kOverflow = 6;
inline constexpr int kSubscriptOutOfRange = 9;
inline constexpr int kDivisionByZero = 11;
inline constexpr int kTypeMismatch = 13;
inline constexpr int kInternal = 51;
inline constexpr int kFileNotFound = 53;
inline constexpr int kNoObject = 91;
inline constexpr int kCannotCreateObject = 429;
inline constexpr int kNoSuchMember = 438;
inline constexpr int kWrongArguments = 450;
/// The object's program has ended, or doesn't answer.
inline constexpr int kServerIsGone = 462;
/// What a driver's own exception arrives as.
inline constexpr int kDriverException = -2147352567;
}  // namespace error_number

/// A new object may find the program back.
inline bool isGone(const OperationError& error) { return error.number() == error_number::kServerIsGone; }

/// The failure with this number and its customary description; source is "Vantrel".
OperationError runTimeError(int number);

/// Inside a catch block: the exception in flight as an OperationError. Exceptions of other kinds become
/// number 51 with their own text.
OperationError currentError();

/// The common report: "Error " number ": " description CR LF label.
std::string errorReport(const OperationError& error, const std::string& label);

/// The report that also names who failed: source " Error " number ": " description CR LF label.
std::string sourcedErrorReport(const OperationError& error, const std::string& label);

}  // namespace vantrel::platform
