#include "monitor/http_server.hpp"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>

#include "monitor/failure.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

struct Socket {
  sockaddr_storage address{};
  socklen_t length = 0;
  std::string host;  // as in a URL
};

[[noreturn]] void fail(const std::string& address, const std::string& why) {
  throw Failure(visible(address) + ": cannot be listened on: " + why);
}

Socket parse(const std::string& text) {
  std::string_view host = "127.0.0.1";
  std::string_view port = text;
  const std::size_t colon = text.rfind(':');
  if (colon != std::string::npos) {
    port = std::string_view(text).substr(colon + 1);
    if (colon != 0) host = std::string_view(text).substr(0, colon);
  }
  Socket result;
  result.host = host;
  std::uint16_t number = 0;
  const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), number);
  if (error != std::errc() || end != port.data() + port.size()) {
    fail(text, "it must end in a port from 0 to 65535");
  }
  auto* four = reinterpret_cast<sockaddr_in*>(&result.address);
  auto* six = reinterpret_cast<sockaddr_in6*>(&result.address);
  const bool isSix = host.starts_with('[') && host.ends_with(']');
  const std::string bare(isSix ? host.substr(1, host.size() - 2) : host);
  if (isSix && ::inet_pton(AF_INET6, bare.c_str(), &six->sin6_addr) == 1) {
    six->sin6_family = AF_INET6;
    six->sin6_port = htons(number);
    result.length = sizeof *six;
  } else if (!isSix && ::inet_pton(AF_INET, bare.c_str(), &four->sin_addr) == 1) {
    four->sin_family = AF_INET;
    four->sin_port = htons(number);
    result.length = sizeof *four;
  } else {
    fail(text, "it must be an address of IPv4, or one of IPv6 in brackets");
  }
  return result;
}

// Opened here and not by the server's library, which does not tell why it could not.
int listenOn(const std::string& text, Socket& socket) {
  auto* address = reinterpret_cast<sockaddr*>(&socket.address);
  const int file = ::socket(address->sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int yes = 1;
  if (file < 0) fail(text, std::strerror(errno));
  ::setsockopt(file, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  if (::bind(file, address, socket.length) != 0 || ::listen(file, 16) != 0 ||
      ::getsockname(file, address, &socket.length) != 0) {
    const int error = errno;
    ::close(file);
    fail(text, std::strerror(error));
  }
  return file;
}

std::uint16_t portOf(const Socket& socket) {
  if (socket.address.ss_family == AF_INET) {
    return ntohs(reinterpret_cast<const sockaddr_in*>(&socket.address)->sin_port);
  }
  return ntohs(reinterpret_cast<const sockaddr_in6*>(&socket.address)->sin6_port);
}

MHD_Result send(MHD_Connection* connection, const Page& page) {
  // The library copies the body, and takes it as not const for other modes.
  MHD_Response* response = MHD_create_response_from_buffer(
      page.body.size(), const_cast<char*>(page.body.data()), MHD_RESPMEM_MUST_COPY);
  if (response == nullptr) return MHD_NO;
  MHD_add_response_header(response, "Content-Type", page.type.c_str());
  MHD_add_response_header(response, "X-Content-Type-Options", "nosniff");
  const MHD_Result result = MHD_queue_response(connection, page.status, response);
  MHD_destroy_response(response);
  return result;
}

MHD_Result answer(void* context, MHD_Connection* connection, const char* url, const char* method,
                  const char* /*version*/, const char* /*upload*/, std::size_t* uploadSize,
                  void** /*request*/) {
  const auto& page = *static_cast<const std::function<Page(const std::string&)>*>(context);
  if (*uploadSize != 0) return MHD_NO;
  const std::string_view verb = method;
  if (verb != "GET" && verb != "HEAD") return send(connection, {405, "text/plain", "GET only\n"});
  try {
    return send(connection, page(url));
  } catch (const std::exception& error) {
    return send(connection, {500, "text/plain; charset=utf-8", std::string(error.what()) + '\n'});
  }
}

}  // namespace

struct HttpServer::Daemon {
  MHD_Daemon* daemon;
  ~Daemon() { MHD_stop_daemon(daemon); }
};

HttpServer::HttpServer(const std::string& address,
                       std::function<Page(const std::string& path)> page)
    : page_(std::move(page)) {
  Socket socket = parse(address);
  const int file = listenOn(address, socket);
  url_ = "http://" + socket.host + ':' + std::to_string(portOf(socket));
  constexpr unsigned kMostConnections = 16;
  constexpr unsigned kIdleSeconds = 10;
  MHD_Daemon* daemon = MHD_start_daemon(
      MHD_USE_INTERNAL_POLLING_THREAD, 0, nullptr, nullptr, answer, &page_,
      MHD_OPTION_LISTEN_SOCKET, file, MHD_OPTION_CONNECTION_LIMIT, kMostConnections,
      MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds, MHD_OPTION_END);
  if (daemon == nullptr) {
    ::close(file);
    fail(address, "the server cannot be started");
  }
  daemon_ = std::unique_ptr<Daemon>(new Daemon{daemon});
}

HttpServer::~HttpServer() = default;

}  // namespace tavrenix::monitor
