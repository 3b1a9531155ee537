#include "maintain/journal_json.hpp"

#include "monitor/failure.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::maintain {

namespace {

using monitor::Failure;
using monitor::Json;

constexpr const char* kKind = "tavrenix maintenance";

void addText(Json& object, const char* name, const std::optional<std::string>& text) {
  if (text && !text->empty()) object[name] = *text;
}

Json pathDocument(const PathRecord& path) {
  Json object = {{"identifier", path.identifier}};
  addText(object, "device", path.device);
  addText(object, "address", path.address);
  addText(object, "host_port", path.hostPort);
  addText(object, "target_port", path.targetPort);
  object["state_before"] = path.state;
  object["used_before"] = path.wasUsed;
  object["step"] = nameOf(path.step);
  addText(object, "step_time", path.time);
  return object;
}

Json unitDocument(const UnitRecord& unit) {
  const Usable before = usableBefore(unit), after = usableAfter(unit);
  Json states = Json::object();
  for (std::size_t i = 0; i < std::size(before.byState); ++i) {
    states[monitor::kStates[i]] = {{"before", before.byState[i]}, {"after", after.byState[i]}};
  }
  Json object = {{"identifier", unit.identifier}};
  addText(object, "wwid", unit.wwid);
  object["title"] = unit.title;
  object["accepted"] = unit.isAccepted;
  object["usable_before"] = before.active();
  object["usable_after"] = after.active();
  object["states"] = std::move(states);
  object["paths"] = Json::array();
  for (const PathRecord& path : unit.paths) object["paths"].push_back(pathDocument(path));
  return object;
}

std::optional<std::string> textIn(const Json& object, const char* name) {
  const auto found = object.find(name);
  if (found == object.end()) return std::nullopt;
  return found->get<std::string>();
}

template <class Value>
Value known(const std::optional<Value>& value, const std::string& word) {
  if (!value) throw Failure("it has the unknown word " + monitor::visible(word));
  return *value;
}

PathRecord pathIn(const Json& object) {
  PathRecord path;
  path.identifier = object.at("identifier").get<std::string>();
  path.device = textIn(object, "device");
  path.address = textIn(object, "address");
  path.hostPort = textIn(object, "host_port");
  path.targetPort = textIn(object, "target_port");
  path.state = object.at("state_before").get<std::string>();
  path.wasUsed = object.at("used_before").get<bool>();
  const auto step = object.at("step").get<std::string>();
  path.step = known(stepNamed(step), step);
  path.time = textIn(object, "step_time").value_or("");
  return path;
}

UnitRecord unitIn(const Json& object) {
  UnitRecord unit{object.at("identifier").get<std::string>(),
                  textIn(object, "wwid"),
                  object.at("title").get<std::string>(),
                  object.at("accepted").get<bool>(),
                  {}};
  for (const Json& path : object.at("paths")) unit.paths.push_back(pathIn(path));
  return unit;
}

}  // namespace

Json documentOf(const Journal& journal) {
  Json document = {{"kind", kKind},
                   {"version", {{"major", 1}, {"minor", 0}}},
                   {"state", nameOf(journal.state)},
                   {"host", journal.host},
                   {"boot_id", journal.bootID},
                   {"user", journal.user}};
  addText(document, "reason", journal.reason);
  addText(document, "begun", journal.begun);
  addText(document, "ended", journal.ended);
  document["selection"] = journal.selection;
  document["surprises"] = journal.surprises;
  document["units"] = Json::array();
  for (const UnitRecord& unit : journal.units) document["units"].push_back(unitDocument(unit));
  return document;
}

Journal journalIn(const std::string& text) {
  const Json document = Json::parse(text);
  if (!document.is_object() || document.value("kind", "") != kKind) {
    throw Failure("another program's file");
  }
  if (document.at("version").at("major").get<int>() != 1) {
    throw Failure("its version is not one that this program knows");
  }
  Journal journal;
  const auto state = document.at("state").get<std::string>();
  journal.state = known(stateNamed(state), state);
  journal.host = document.at("host").get<std::string>();
  journal.bootID = document.at("boot_id").get<std::string>();
  journal.user = document.at("user").get<std::string>();
  journal.reason = textIn(document, "reason").value_or("");
  journal.begun = textIn(document, "begun").value_or("");
  journal.ended = textIn(document, "ended").value_or("");
  journal.selection = document.at("selection").get<std::vector<std::string>>();
  journal.surprises = document.at("surprises").get<std::vector<std::string>>();
  for (const Json& unit : document.at("units")) journal.units.push_back(unitIn(unit));
  return journal;
}

}  // namespace tavrenix::maintain
