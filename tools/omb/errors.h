// Errors other than those of files: a wrong command line, and a step that cannot run.
#pragma once

#include <stdexcept>
#include <string>

namespace omb {

// A wrong command line; `usage` says how it should look. Exit status 2.
class UsageError : public std::runtime_error {
 public:
  explicit UsageError(const std::string& message, std::string usage = {})
      : std::runtime_error(message), usage_(std::move(usage)) {}
  const std::string& usage() const { return usage_; }

 private:
  std::string usage_;
};

// Why a step cannot run on an image, in words that follow the step's name. Exit status 1.
struct StepError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace omb
