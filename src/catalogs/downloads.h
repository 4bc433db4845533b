// Documents from the network, and their one place in the program.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

namespace vantrel::catalogs {

/// Asked several times a second while a download runs, so that the window of the search stays responsive;
/// false gives the download up.
using KeepGoing = std::function<bool()>;

class DownloadError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The caller answered false to "keep going?".
class DownloadGivenUp : public DownloadError {
    using DownloadError::DownloadError;
};

class Downloads {
  public:
    virtual ~Downloads() = default;

    /// The document at the address. Throws DownloadError with one line that says what is wrong: no network,
    /// no such server, a refusal, a time-out.
    virtual std::string fetch(const std::string& url, const KeepGoing& keepGoing) = 0;
};

}  // namespace vantrel::catalogs
