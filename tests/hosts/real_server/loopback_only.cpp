// Loaded before a server's own libraries: whatever it listens at, only this machine reaches it. indiserver
// would listen on every interface, and has no option against it.
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" int bind(int descriptor, const sockaddr* address, socklen_t length) noexcept {
    if (address->sa_family != AF_INET || length < sizeof(sockaddr_in))
        return static_cast<int>(::syscall(SYS_bind, descriptor, address, length));
    sockaddr_in here = *reinterpret_cast<const sockaddr_in*>(address);
    here.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return static_cast<int>(::syscall(SYS_bind, descriptor, &here, sizeof here));
}
