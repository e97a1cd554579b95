#include "memory_limit.h"

#include <charconv>
#include <stdexcept>
#include <string_view>

#include "errors.h"
#include "text.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/resource.h>
#endif

namespace omb {

uint64_t ParseMemory(const std::string& text) {
  constexpr std::string_view kUnits = "kmgt";
  uint64_t number = 0;
  const char* last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, number);
  size_t unit = std::string_view::npos;
  if (end + 1 == last) unit = kUnits.find(Lowercase(end));
  if (error != std::errc() || unit == std::string_view::npos || number == 0 || number >> 24 != 0) {
    throw UsageError("--memory-limit is a number with K, M, G or T, such as 500M, not '" + text +
                     "'");
  }
  return number << 10 * (unit + 1);
}

#ifdef _WIN32
void LimitMemory(uint64_t bytes) {
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_PROCESS_MEMORY;
  limits.ProcessMemoryLimit = static_cast<SIZE_T>(bytes);
  const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  if (job == nullptr ||
      !SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits) ||
      !AssignProcessToJobObject(job, GetCurrentProcess())) {
    throw std::runtime_error("this system cannot keep --memory-limit");
  }
}
#else
void LimitMemory(uint64_t bytes) {
  // What the program may write to, of its own and anonymous alike.
  const auto most = static_cast<rlim_t>(bytes);
  const rlimit limit = {most, most};
  if (setrlimit(RLIMIT_DATA, &limit) != 0) {
    throw std::runtime_error("this system cannot keep --memory-limit");
  }
}
#endif

}  // namespace omb
