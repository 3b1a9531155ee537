#include "model/registrations.hpp"

#include "model/registry_names.hpp"
#include "runtime/values.hpp"

namespace tavrenix {

namespace {

// The one key of a matching dictionary.
inline constinit ob::ConstantString kClassNameStorage("Class Name");
inline constexpr const ob::String& kClassName = kClassNameStorage.string;

}  // namespace

ob::Ref<const ob::Dictionary> matchingOfClass(std::string_view className) {
  ob::DictionaryBuilder matching(1);
  matching.add(kClassName, ob::String::make(className));
  return matching.build();
}

std::optional<NotificationRequest> readNotificationRequest(std::string_view kind,
                                                           const ob::Dictionary* matching) {
  const auto* className = matching != nullptr ? matching->valueAs<ob::String>(kClassName) : nullptr;
  const bool ofArrivals = kind == registry::kFirstMatchNotification;
  const bool known = ofArrivals || kind == registry::kTerminateNotification;
  if (className == nullptr || !known) return std::nullopt;
  return NotificationRequest{ofArrivals, std::string(className->view())};
}

}  // namespace tavrenix
