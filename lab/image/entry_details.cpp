// detailsFromJSON: reads the details of an entry.

#include <algorithm>
#include <span>

#include "host/storage_details.hpp"
#include "lab/image/image_entry.hpp"

namespace tavrenix::lab {

namespace {

enum class Kind { kText, kNumber, kBoolean, kTexts };

struct Detail {
  std::string_view name;  // in the image
  const ob::String& key;
  Kind kind;
};

const Detail kUnitDetails[] = {
    {"device", keys::kMPIOLogicalUnitDetailDeviceKey, Kind::kText},
    {"name", keys::kMPIOLogicalUnitDetailMapNameKey, Kind::kText},
    {"wwid", keys::kMPIOLogicalUnitDetailWWIDKey, Kind::kText},
    {"size", keys::kMPIOLogicalUnitDetailSizeKey, Kind::kNumber},
    {"selector", keys::kMPIOLogicalUnitDetailSelectorKey, Kind::kText},
    {"queueing", keys::kMPIOLogicalUnitDetailQueueingKey, Kind::kBoolean},
    {"handler", keys::kMPIOLogicalUnitDetailHardwareHandlerKey, Kind::kText},
    {"suspended", keys::kMPIOLogicalUnitDetailSuspendedKey, Kind::kBoolean},
    {"openCount", keys::kMPIOLogicalUnitDetailOpenCountKey, Kind::kNumber},
    {"groups", keys::kMPIOLogicalUnitDetailGroupStatesKey, Kind::kTexts},
};

const Detail kPathDetails[] = {
    {"device", keys::kMPIOLogicalUnitPathDetailDeviceKey, Kind::kText},
    {"number", keys::kMPIOLogicalUnitPathDetailDeviceNumberKey, Kind::kText},
    {"address", keys::kMPIOLogicalUnitPathDetailAddressKey, Kind::kText},
    {"group", keys::kMPIOLogicalUnitPathDetailGroupKey, Kind::kNumber},
    {"driverState", keys::kMPIOLogicalUnitPathDetailDriverStateKey, Kind::kText},
    {"failures", keys::kMPIOLogicalUnitPathDetailFailureCountKey, Kind::kNumber},
    {"deviceState", keys::kMPIOLogicalUnitPathDetailDeviceStateKey, Kind::kText},
    {"accessState", keys::kMPIOLogicalUnitPathDetailAccessStateKey, Kind::kText},
    {"hostPort", keys::kMPIOLogicalUnitPathDetailHostPortKey, Kind::kText},
    {"targetPort", keys::kMPIOLogicalUnitPathDetailTargetPortKey, Kind::kText},
    {"errors", keys::kMPIOLogicalUnitPathDetailErrorCountKey, Kind::kNumber},
    {"timeouts", keys::kMPIOLogicalUnitPathDetailTimeoutCountKey, Kind::kNumber},
    {"inFlight", keys::kMPIOLogicalUnitPathDetailInFlightKey, Kind::kNumber},
};

ob::Ref<const ob::Object> detailFromJSON(const Json& json, const Place& place, Kind kind) {
  switch (kind) {
    case Kind::kText:
      return stringFromJSON(json, place);
    case Kind::kNumber:
      return ob::Number::make(integerFromJSON<std::uint64_t>(json, place));
    case Kind::kBoolean:
      return booleanFromJSON(json, place);
    case Kind::kTexts:
      break;
  }
  expectArray(json, place);
  ob::Array::Values texts;
  for (const Json& element : json) {
    texts.push_back(stringFromJSON(element, place.at(texts.size())));
  }
  return ob::Array::make(std::move(texts));
}

}  // namespace

ob::Ref<const ob::Dictionary> detailsFromJSON(const Json& json, const Place& place, bool isPath) {
  expectObject(json, place);
  const std::span<const Detail> known =
      isPath ? std::span<const Detail>(kPathDetails) : std::span<const Detail>(kUnitDetails);
  ob::DictionaryBuilder details(known.size());
  for (const auto& member : json.get_ref<const Json::object_t&>()) {
    const Place itsPlace = place.at(member.first);
    const auto detail = std::find_if(known.begin(), known.end(),
                                     [&](const Detail& one) { return one.name == member.first; });
    if (detail == known.end()) itsPlace.refuse("unknown key");
    details.add(detail->key, detailFromJSON(member.second, itsPlace, detail->kind));
  }
  return details.build();
}

}  // namespace tavrenix::lab
