// The document and its files: opened, saved, printed, and never let go with unsaved work unasked.
#pragma once

#include <windows.h>

#include <filesystem>
#include <vector>

#include "document.h"
#include "jobs.h"
#include "recent_files.h"

namespace ombview {

class DocumentFiles {
 public:
  DocumentFiles(HWND owner, Document& document, Jobs& jobs);

  // Asks about unsaved work, then runs `then` unless the person cancelled.
  void LetGo(Jobs::Finish then);
  void OpenByDialog();
  // The first one here, each other one in a window of its own.
  void Open(const std::vector<std::filesystem::path>& files);
  void Save(Jobs::Finish then = {});
  void SaveAs(Jobs::Finish then = {});
  void Print();

  const RecentFiles& recent() const { return recent_; }

 private:
  void OpenNow(const std::vector<std::filesystem::path>& files);
  void SaveTo(const std::filesystem::path& file, Jobs::Finish then);
  void Remember(const std::filesystem::path& file);

  HWND owner_;
  Document& document_;
  Jobs& jobs_;
  RecentFiles recent_;
};

}  // namespace ombview
