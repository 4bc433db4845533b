// A pipe of the operating system, for loops that watch descriptors.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include <unistd.h>

namespace vantrel::test {

class Pipe {
  public:
    Pipe() {
        int ends[2];
        if (::pipe(ends) != 0) throw std::runtime_error("no pipe");
        out_ = ends[0];
        in_ = ends[1];
    }
    ~Pipe() {
        closeInput();
        ::close(out_);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int descriptor() const { return out_; }
    int input() const { return in_; }
    void write(const std::string& text) const {
        if (::write(in_, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
            throw std::runtime_error("the pipe is full");
    }
    void closeInput() {
        if (in_ >= 0) ::close(std::exchange(in_, -1));
    }
    /// What is there; empty also at the end.
    std::string read() const {
        char text[64];
        const ssize_t got = ::read(out_, text, sizeof text);
        return got > 0 ? std::string(text, static_cast<std::size_t>(got)) : std::string();
    }

  private:
    int out_ = -1;
    int in_ = -1;
};

}  // namespace vantrel::test
