#include "netlink/socketerror.h"

#include <cerrno>

namespace netlink
{

SocketError socketError(int err)
{
    switch (err) {
    case ECONNRESET:
    case EPIPE:
        return RemoteHostClosedError;
    case EACCES:
    case EPERM:
        return SocketAccessError;
    case EMFILE:
    case ENFILE:
    case ENOBUFS:
    case ENOMEM:
    case EFAULT:
    case ENOTSOCK:
        return SocketResourceError;
    case ETIMEDOUT:
        return SocketTimeoutError;
    case EHOSTUNREACH:
    case ENETUNREACH:
    case ECONNABORTED: // a client that left before it was accepted
        return NetworkError;
    case EADDRINUSE:
        return AddressInUseError;
    case EADDRNOTAVAIL:
        return SocketAddressNotAvailableError;
    case EAFNOSUPPORT:
    case EPROTONOSUPPORT:
    case EPROTO:
    case EINVAL:
    case EBADF:
    case EOPNOTSUPP:
        return UnsupportedSocketOperationError;
    default:
        return UnknownSocketError;
    }
}

} // namespace netlink
