// SPDX-License-Identifier: MIT
#include "platform/udp_sender.h"

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <fcntl.h>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

#include "util/exception.h"

namespace korr::platform::inline v2_1 {
namespace {

class UdpSender;
using UdpSenderError = util::ExceptionTemplate<UdpSender>;

#ifdef _WIN32

using Socket = SOCKET;
constexpr Socket kNoSocket = INVALID_SOCKET;
using Length = int;

// The network library, for as long as a socket needs it.
class Network {
 public:
  Network() {
    WSADATA data;
    if (WSAStartup(MAKEWORD(2, 2), &data) != 0) throw UdpSenderError("no network");
  }
  ~Network() { WSACleanup(); }
  Network(const Network&) = delete;
  Network& operator=(const Network&) = delete;
};

void closeSocket(Socket socket) {
  closesocket(socket);
}

bool neverWait(Socket socket) {
  u_long on = 1;
  return ioctlsocket(socket, static_cast<long>(FIONBIO), &on) == 0;
}

#else

using Socket = int;
constexpr Socket kNoSocket = -1;
using Length = std::size_t;

struct Network {};

void closeSocket(Socket socket) {
  close(socket);
}

bool neverWait(Socket socket) {
  return fcntl(socket, F_SETFL, O_NONBLOCK) == 0 && fcntl(socket, F_SETFD, FD_CLOEXEC) == 0;
}

#endif

// A connected socket for the first of the receiver's addresses that gives one.
Socket connectTo(const addrinfo* addresses) {
  for (const addrinfo* address = addresses; address; address = address->ai_next) {
    const Socket socket = ::socket(address->ai_family, address->ai_socktype, address->ai_protocol);
    if (socket == kNoSocket) continue;
    if (neverWait(socket) &&
        connect(socket, address->ai_addr, static_cast<socklen_t>(address->ai_addrlen)) == 0)
      return socket;
    closeSocket(socket);
  }
  return kNoSocket;
}

class UdpSender final : public IUdpSender {
 public:
  UdpSender(const std::string& host, std::uint16_t port) {
    addrinfo wanted{};
    wanted.ai_family = AF_UNSPEC;
    wanted.ai_socktype = SOCK_DGRAM;
    wanted.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.c_str(), std::to_string(port).c_str(), &wanted, &found) != 0 || !found)
      throw UdpSenderError("no host %s", host.c_str());
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> addresses(found, &freeaddrinfo);
    socket_ = connectTo(addresses.get());
    if (socket_ == kNoSocket)
      throw UdpSenderError("no route to %s, port %u", host.c_str(), static_cast<unsigned>(port));
  }
  ~UdpSender() override { closeSocket(socket_); }
  UdpSender(const UdpSender&) = delete;
  UdpSender& operator=(const UdpSender&) = delete;

  bool send(std::string_view datagram) noexcept override {
    return ::send(socket_, datagram.data(), static_cast<Length>(datagram.size()), 0) >= 0;
  }

 private:
  [[maybe_unused, no_unique_address]] Network network_;
  Socket socket_ = kNoSocket;
};

}  // namespace

std::unique_ptr<IUdpSender> openUdpSender(const std::string& host, std::uint16_t port) {
  return std::make_unique<UdpSender>(host, port);
}

}  // namespace korr::platform::inline v2_1
