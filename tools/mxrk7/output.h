// The one output path of every verb. A verb builds a JSON document; with --json that document is
// printed, otherwise the verb's text renderer turns the same document into text for people. Text
// and JSON therefore never disagree.
#pragma once

#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <string_view>

#include "exit_status.h"

namespace mxrk7 {

using Render = std::function<std::string(const nlohmann::json &)>;

class Output {
 public:
  explicit Output(bool json) : json_(json) {}
  bool json() const { return json_; }

  // The result of a verb, on standard output.
  void result(const nlohmann::json &doc, const Render &text) const;
  // One event of a stream (watch): one JSON object per line, or one text line; flushed at once.
  void event(const nlohmann::json &doc, const Render &text) const;
  // A failure: with --json an {"error": {...}} object on standard output, else a message on
  // standard error.
  void failure(const Failure &failure) const;
  // A note for people on standard error (progress, readiness), kept out of the JSON stream.
  void note(std::string_view text) const;

 private:
  bool json_;
};

}  // namespace mxrk7
