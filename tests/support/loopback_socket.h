// A socket of this machine alone, at a port that was free.
#pragma once

#include <stdexcept>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace vantrel::test {

/// Who made it closes it.
struct LoopbackSocket {
    explicit LoopbackSocket(int type) : number(::socket(AF_INET, type | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(number, generic, size) != 0 || ::getsockname(number, generic, &size) != 0)
            throw std::runtime_error("no place to listen at");
        port = ntohs(address.sin_port);
    }

    int number;
    int port = 0;
};

}  // namespace vantrel::test
