// A small HTTP server for machines that scrape: one thread, few connections, GET and HEAD alone.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace tavrenix::monitor {

struct Page {
  unsigned status = 404;
  std::string type = "text/plain; charset=utf-8";
  std::string body = "not found\n";
};

class HttpServer {
 public:
  // Answers with what page returns for a path such as "/metrics", on a thread of the server's own,
  // one request after the other. address: "PORT", "ADDRESS:PORT" or "[ADDRESS]:PORT", where the
  // address is one of IPv4 or IPv6 and otherwise 127.0.0.1; port 0 is any free one.
  // At most 16 connections are open, each for at most 10 seconds without a request.
  // Errors: throws Failure, which names the address and the cause.
  HttpServer(const std::string& address, std::function<Page(const std::string& path)> page);
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  // "http://127.0.0.1:9808", with the port that it has got.
  const std::string& url() const { return url_; }

 private:
  struct Daemon;
  std::function<Page(const std::string& path)> page_;
  std::string url_;
  std::unique_ptr<Daemon> daemon_;
};

}  // namespace tavrenix::monitor
