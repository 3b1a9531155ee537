#include "tests/soak/answers.hpp"

#include <string_view>

namespace tavrenix::soak {

namespace {

struct TableRow {
  std::int64_t code;
  std::string_view message;
  bool withResult = false;
};
constexpr TableRow kTable[] = {
    {kMPIOErrorBadArgument, "Bad path object reference"},
    {kMPIOErrorBadArgument, "Bad logical unit object reference"},
    {kMPIOErrorBadArgument, "newBatchCount cannot be 0"},
    {kMPIOErrorBadArgument, "Bad parameter. algorithmString string is nil"},
    {kMPIOErrorBadArgument, "Bad value for batchCount.  Must be greater than 0"},
    {kMPIOErrorServiceNotFound,
     "KsServiceMatching unable to locate any services matching multipathed logical units"},
    {kMPIOErrorServiceNotFound,
     "KsServiceMatching unable to locate any services matching multipathed logical unit paths"},
    {kMPIOErrorServiceNotFound,
     "KsServiceGetMatchingService failed to find entry matching specified entry ID"},
    {kMPIOErrorServiceNotFound, "Unable to locate needed service in KsRegistry"},
    {kMPIOErrorPropertyWriteFailed, "KsRegistryEntrySetObProperty failed", true},
    {kMPIOErrorPropertyWriteFailed, "Unable to set property", true},
    {kMPIOErrorPathsLackIdentifiers, "Attempt to enable LUN with paths lacking IDs"},
    {kMPIOErrorPathsLackIdentifiers, "Attempt to disable LUN with paths lacking IDs"},
    {kMPIOErrorStatisticsUnavailable, "sysctlbyname failed", true},
    {kMPIOErrorNotificationFailed, "KsServiceAddMatchingNotification for logical units failed",
     true},
    {kMPIOErrorNotificationFailed, "KsServiceAddMatchingNotification for logical unit paths failed",
     true},
    {kMPIOErrorNoResources, "Failed to allocate an internal structure"},
    {kMPIOErrorNoResources, "Unable to create notification port"},
};

bool isOfTable(std::int64_t code, std::string_view message, bool withResult) {
  for (const auto& row : kTable) {
    if (row.code == code && row.message == message && row.withResult == withResult) return true;
  }
  return false;
}

}  // namespace

std::optional<std::string> faultOf(ObErrorRef error, bool done) {
  if (error == nullptr) return std::nullopt;
  const char* domain = ObStringGetUTF8(ObErrorGetDomain(error));
  const std::string message = domain == nullptr ? "<no message>" : domain;
  if (done) return "an error although the call was done: " + message;
  std::int64_t result = 0;
  const auto number = static_cast<ObNumberRef>(
      ObDictionaryGetValue(ObErrorGetUserInfo(error), kMPIOErrorResultCodeKey));
  const bool withResult = ObNumberGetInt64(number, &result) && result != 0;
  const std::int64_t code = ObErrorGetCode(error);
  if (isOfTable(code, message, withResult)) return std::nullopt;
  return "no error of the table: " + message + ", code " + std::to_string(code) +
         (withResult ? " with result " + std::to_string(result) : "");
}

std::optional<std::string> faultOf(ObDictionaryRef dictionary,
                                   std::initializer_list<ExpectedKind> expected) {
  if (dictionary == nullptr) return std::nullopt;
  std::size_t known = 0;
  for (const auto& [key, kind] : expected) {
    const ObTypeRef value = ObDictionaryGetValue(dictionary, key);
    if (value == nullptr) continue;
    ++known;
    if (ObGetTypeID(value) != kind)
      return std::string("a value of another kind under ") + ObStringGetUTF8(key);
  }
  if (known == ObDictionaryGetCount(dictionary)) return std::nullopt;
  return "a dictionary with other keys than those that it is to have";
}

}  // namespace tavrenix::soak
