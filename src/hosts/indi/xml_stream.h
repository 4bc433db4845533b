// The stream of XML elements that an INDI server sends, cut into values.
//
// There is no root element: elements follow each other for as long as the connection lasts, in pieces of any
// size. What comes is a small part of XML (no document types, no entities beside the usual ones), and it
// comes from outside: size, depth and the time that an element may stay unfinished are limited. The base64
// text of BLOBs, which may be a hundred megabytes, is passed on as it comes.
#pragma once

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantrel::hosts::indi {

/// The stream makes no sense: nothing that follows can be trusted.
class StreamError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct XmlElement {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::string text;  // without blanks around it
    std::vector<XmlElement> children;

    /// Empty when there is none of the name.
    const std::string& attribute(std::string_view wanted) const;
};

/// Takes the text of oneBLOB elements. What it throws ends the stream.
class BlobText {
  public:
    virtual ~BlobText() = default;
    virtual void begin(const XmlElement& vector, const XmlElement& blob) = 0;
    virtual void text(std::string_view base64) = 0;
    virtual void end() = 0;
};

class XmlStream {
  public:
    static constexpr std::size_t kLargestElement = 512U << 10U;  // bytes, without the text of BLOBs
    static constexpr std::size_t kDeepest = 4;

    /// Whole elements of the outermost level go to `onElement`. Without a taker the text of BLOBs is left
    /// out.
    explicit XmlStream(std::function<void(XmlElement)> onElement, BlobText* blobs = nullptr)
        : onElement_(std::move(onElement)), blobs_(blobs) {}

    /// Throws StreamError, after which it is of no use any more.
    void feed(std::string_view bytes);

    /// The end of an element is still to come.
    bool insideElement() const { return !open_.empty() || inMarkup_; }

  private:
    void takeText(std::string_view text);
    /// One more character between '<' and '>'; true when it was the last one.
    bool takeMarkup(char c);
    void readMarkup();
    void openElement(std::string_view tag);
    void closeElement(std::string_view name);
    void count(std::size_t bytes);
    bool inBlob() const;

    std::function<void(XmlElement)> onElement_;
    BlobText* blobs_;
    std::vector<XmlElement> open_;  // outermost first
    std::string markup_;            // since '<'
    bool inMarkup_ = false;
    char quote_ = 0;         // the one that a value of an attribute is in
    std::size_t bytes_ = 0;  // of the outermost element
};

}  // namespace vantrel::hosts::indi
