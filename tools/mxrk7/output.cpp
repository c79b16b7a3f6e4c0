#include "output.h"

#include <fmt/core.h>

#include <cstdio>

namespace mxrk7 {

namespace {

void print(std::FILE *stream, const std::string &text) {
  std::fputs(text.c_str(), stream);
  if (!text.empty() && text.back() != '\n') std::fputc('\n', stream);
  std::fflush(stream);
}

}  // namespace

void Output::result(const nlohmann::json &doc, const Render &text) const {
  print(stdout, json_ ? doc.dump(2) : text(doc));
}

void Output::event(const nlohmann::json &doc, const Render &text) const {
  print(stdout, json_ ? doc.dump() : text(doc));
}

void Output::failure(const Failure &failure) const {
  if (json_) {
    nlohmann::json error = failure.details();
    error["exit_code"] = static_cast<int>(failure.code());
    error["message"] = failure.what();
    print(stdout, nlohmann::json{{"error", error}}.dump(2));
  } else {
    print(stderr, fmt::format("mxrk7: {}", failure.what()));
  }
}

void Output::note(std::string_view text) const { print(stderr, fmt::format("mxrk7: {}", text)); }

}  // namespace mxrk7
