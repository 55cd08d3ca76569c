#pragma once

namespace netlink
{

// The error numbers Net Link shows in the status line. They keep the values of the toolkit's socket
// errors the program showed before it had its own sockets, so that a number a user reports still
// means what it meant.
enum SocketError : int
{
    UnknownSocketError = -1,
    RemoteHostClosedError = 1,
    SocketAccessError = 3,
    SocketResourceError = 4,
    SocketTimeoutError = 5,
    NetworkError = 7,
    AddressInUseError = 8,
    SocketAddressNotAvailableError = 9,
    UnsupportedSocketOperationError = 10,
};

// The error number for a failed socket, bind, listen, accept, send or receive's errno.
SocketError socketError(int err);

} // namespace netlink
