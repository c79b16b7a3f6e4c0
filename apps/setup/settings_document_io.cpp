#include "settings_document_io.h"

#include <fstream>
#include <sstream>
#include <variant>

#include "support/setting_entries.h"
#include "support/settings_document.h"
#include "support/stored_settings.h"

namespace mxrk7setup {

namespace {

using namespace nvx::support;

std::string plural(size_t n, const char *word) { return std::to_string(n) + " " + word + (n == 1 ? "" : "s"); }

// The checked plan of the document at `path`, or a message saying what is wrong with it.
std::variant<Plan, std::string> readPlan(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return "Cannot read " + path + ".";
  std::stringstream text;
  text << in.rdbuf();
  const auto document = nlohmann::json::parse(text.str(), nullptr, false);
  if (document.is_discarded()) return path + " is not a settings file (it is not JSON).";
  auto plan = planImport(document);
  if (const auto *error = std::get_if<ImportError>(&plan))
    return path + " cannot be imported; nothing was changed.\n" + error->text();
  return std::get<Plan>(std::move(plan));
}

std::string describeAssignment(const Assignment &assignment) {
  return targetOf(*assignment.setting, assignment.args) + ": " +
         valueText(fieldsJson(*assignment.setting, assignment.args, assignment.values));
}

}  // namespace

bool exportSettings(const std::string &path, std::string &message) {
  const auto file = StoredSettings::read();
  if (file.state() == StoredSettings::State::Unreadable) {
    message = "The settings file " + file.path() + " cannot be read; nothing was exported.";
    return false;
  }
  const auto exported = nvx::support::exportSettings(file);
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << documentText(exported.document);
  out.close();
  if (!out) {
    message = "Cannot write " + path + ".";
    return false;
  }
  message = "Exported " + plural(exported.document.at("settings").size(), "setting") + " to " + path + ".";
  if (!exported.skipped.empty())
    message += " Left out " + std::to_string(exported.skipped.size()) + " with a value the library does not take.";
  return true;
}

bool describeImport(const std::string &path, std::string &changes) {
  auto plan = readPlan(path);
  if (const auto *problem = std::get_if<std::string>(&plan)) {
    changes = *problem;
    return false;
  }
  changes.clear();
  for (const auto &change : describe(std::get<Plan>(plan), StoredSettings::read())) {
    if (change.kind == ChangeKind::Unchanged) continue;
    changes += std::string(changeKindName(change.kind)) + ": " + describeAssignment(change.assignment) + "\n";
  }
  if (changes.empty()) changes = "The file holds the settings you have now; they are sent to the mixer again.\n";
  return true;
}

bool importSettings(const std::string &path, std::string &message) {
  auto plan = readPlan(path);
  if (const auto *problem = std::get_if<std::string>(&plan)) {
    message = *problem;
    return false;
  }
  const auto result = applyImport(std::get<Plan>(plan));
  const size_t refused = result.refused();
  message = "Imported " + plural(result.applied.size() - refused, "setting") + " from " + path + ".";
  if (refused) message += " The library refused " + std::to_string(refused) + ".";
  for (const auto &applied : result.applied)
    if (applied.written.warning) message += "\n" + describeAssignment(applied.assignment) + ": " + *applied.written.warning;
  return refused == 0;
}

}  // namespace mxrk7setup
