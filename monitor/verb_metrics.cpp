#include <algorithm>
#include <chrono>
#include <csignal>
#include <ctime>
#include <mutex>

#include "monitor/failure.hpp"
#include "monitor/history.hpp"
#include "monitor/http_server.hpp"
#include "monitor/output.hpp"
#include "monitor/picture_writers.hpp"
#include "monitor/verbs.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

void addMissing(MetricsText& metrics, const std::vector<Difference>& differences) {
  const auto missing = [&](bool isUnit) {
    return static_cast<std::uint64_t>(std::ranges::count_if(
        differences, [=](const auto& each) { return each.isMissing && each.isUnit == isUnit; }));
  };
  metrics.family("tavrenix_missing", MetricsText::Type::gauge,
                 "Units, and paths of other units, that the baseline has and the host has not.");
  metrics.sample(label("kind", "unit"), missing(true));
  metrics.sample(label("kind", "path"), missing(false));
}

// What is asked for: which metrics, and what they compare the storage with.
struct Request {
  explicit Request(const CommandLine& line)
      : expectation(line), set(setNamed(line.value('m').value_or("all"))) {}

  static MetricsText::Set setNamed(const std::string& name) {
    if (name == "all") return MetricsText::Set::all;
    if (name == "states") return MetricsText::Set::states;
    if (name == "units") return MetricsText::Set::units;
    throw Failure("--metrics takes all, states or units, not '" + visible(name) + '\'');
  }

  Expectation expectation;
  MetricsText::Set set;
};

// history: null if there is none.
std::string metricsOf(const Request& request, History* history) {
  const Expectation& expectation = request.expectation;
  const auto begin = std::chrono::steady_clock::now();
  const Storage storage = readStorage();
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  MetricsText metrics(request.set);
  const LabelledStorage labelled(storage);
  addMetrics(metrics,
             {storage.host, labelled, [&](const Unit& unit) { return expectation.pathsOf(unit); }});
  if (const Baseline* baseline = expectation.baseline()) {
    addMissing(metrics, compare(*baseline, storage));
  }
  if (history != nullptr) {
    history->observe(labelled, static_cast<std::uint64_t>(std::time(nullptr)));
    history->addTo(metrics);
  }
  addCollector(metrics, true, took.count());
  return metrics.text();
}

std::string metricsOfAFailure() {
  MetricsText metrics;
  addCollector(metrics, false, 0);
  return metrics.text();
}

// If the metrics cannot be collected, the file says so: left as it was, it would report an old
// state as the current one.
int replaceTextfile(const std::string& file, const Request& request) {
  try {
    replaceFile(file, metricsOf(request, nullptr));
    return 0;
  } catch (const Failure&) {
    replaceFile(file, metricsOfAFailure());
    throw;
  }
}

constexpr char kHtml[] = "text/html; charset=utf-8";
constexpr char kIndex[] =
    "<!DOCTYPE html>\n<html lang=\"en\"><title>tavrenix-monitor</title>\n"
    "<p><a href=\"/picture\">/picture</a>\n<p><a href=\"/picture.svg\">/picture.svg</a>\n"
    "<p><a href=\"/metrics\">/metrics</a>\n<p><a href=\"/json\">/json</a>\n"
    "<p><a href=\"/healthz\">/healthz</a>\n</html>\n";

// Answers scrapes. Calls of the library are serialised by a mutex.
class Exporter {
 public:
  explicit Exporter(const Request& request) : request_(request) {}

  Page page(const std::string& path) {
    const std::lock_guard lock(mutex_);
    if (path == "/metrics") {
      return {200, "text/plain; version=0.0.4; charset=utf-8", metrics()};
    }
    if (path == "/json") {
      return {200, "application/json", textOf(documentOfUnits(readStorage(), true), false)};
    }
    if (path == "/picture" || path == "/picture.svg") return picture(path == "/picture");
    if (path == "/") return {200, kHtml, kIndex};
    if (path == "/healthz") {
      readStorage();
      return {200, "text/plain; charset=utf-8", "ok\n"};
    }
    return {};
  }

  // Notices what happens between two scrapes.
  void look() {
    const std::lock_guard lock(mutex_);
    try {
      const Storage storage = readStorage();
      history_.observe(LabelledStorage(storage), static_cast<std::uint64_t>(std::time(nullptr)));
    } catch (const Failure&) {  // the next scrape tells of it
    }
  }

 private:
  static Page picture(bool asPage) {
    const Storage storage = readStorage();
    const Picture picture = pictureOf(storage, std::time(nullptr), true);
    if (asPage) return {200, kHtml, pictureAsHtml(picture)};
    return {200, "image/svg+xml", pictureAsSvg(picture)};
  }

  std::string metrics() {
    try {
      return metricsOf(request_, &history_);
    } catch (const Failure&) {
      return metricsOfAFailure();
    }
  }

  const Request& request_;
  std::mutex mutex_;
  History history_;
};

int serve(const std::string& address, const Request& request) {
  // Blocked before the server's thread begins, so that only this thread gets them.
  sigset_t ends;
  sigemptyset(&ends);
  sigaddset(&ends, SIGTERM);
  sigaddset(&ends, SIGINT);
  ::pthread_sigmask(SIG_BLOCK, &ends, nullptr);
  Exporter exporter(request);
  exporter.look();
  const HttpServer server(address, [&](const std::string& path) { return exporter.page(path); });
  print(server.url() + "/metrics\n");
  constexpr timespec kBetweenLooks = {10, 0};
  while (::sigtimedwait(&ends, nullptr, &kBetweenLooks) < 0) exporter.look();
  return 0;
}

}  // namespace

int runMetrics(int argc, char** argv) {
  const CommandLine line(argc, argv,
                         {{"textfile", 'T', true},
                          {"listen", 'L', true},
                          {"metrics", 'm', true},
                          kBaselineOption,
                          kPathsOption},
                         0);
  if (line.has('T') && line.has('L')) throw Failure("give --textfile or --listen, not both");
  const Request request(line);
  if (const auto file = line.value('T')) return replaceTextfile(*file, request);
  if (const auto address = line.value('L')) return serve(*address, request);
  print(metricsOf(request, nullptr));
  return 0;
}

}  // namespace tavrenix::monitor
