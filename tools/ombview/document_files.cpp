#include "document_files.h"

#include <shellapi.h>

#include "dialogs.h"
#include "printing.h"
#include "settings.h"

namespace ombview {

namespace {

// Starts the program once more, for one more file.
void StartAnother(const std::filesystem::path& file) {
  wchar_t program[MAX_PATH] = {};
  GetModuleFileNameW(nullptr, program, ARRAYSIZE(program));
  const std::wstring argument = L"\"" + file.native() + L"\"";
  ShellExecuteW(nullptr, L"open", program, argument.c_str(), nullptr, SW_SHOWNORMAL);
}

}  // namespace

DocumentFiles::DocumentFiles(HWND owner, Document& document, Jobs& jobs)
    : owner_(owner), document_(document), jobs_(jobs), recent_(LoadRecentFiles()) {}

void DocumentFiles::LetGo(Jobs::Finish then) {
  if (jobs_.busy()) return;
  const int answer = document_.changed() ? AskToSave(owner_, document_.file()) : IDNO;
  if (answer == IDNO) then();
  if (answer == IDYES) Save(std::move(then));
}

void DocumentFiles::Open(const std::vector<std::filesystem::path>& files) {
  if (files.empty()) return;
  LetGo([=, this] { OpenNow(files); });
}

void DocumentFiles::OpenByDialog() {
  LetGo([this] { OpenNow(AskForFiles(owner_)); });
}

void DocumentFiles::OpenNow(const std::vector<std::filesystem::path>& files) {
  for (size_t i = 1; i < files.size(); ++i) StartAnother(files[i]);
  if (files.empty()) return;
  jobs_.Start("Opening", [=, this, file = files[0]](Progress& progress, const omb::Remark& remark) {
    const omb::Watching watching([&](double share) { progress.Report(share); });
    const auto metadata = std::make_shared<omb::Metadata>();
    const auto image = std::make_shared<omb::Image>(omb::ReadImage(file, remark, metadata.get()));
    return [=, this] {
      document_.Open(std::move(*image), std::move(*metadata), file);
      Remember(file);
    };
  });
}

void DocumentFiles::Save(Jobs::Finish then) {
  try {
    omb::FormatOfPath(document_.file());
  } catch (const omb::FileError&) {  // there is no name, or one that says no format
    return SaveAs(std::move(then));
  }
  SaveTo(document_.file(), std::move(then));
}

void DocumentFiles::SaveAs(Jobs::Finish then) {
  const std::filesystem::path file = AskForName(owner_, document_.file());
  if (!file.empty()) SaveTo(file, std::move(then));
}

void DocumentFiles::SaveTo(const std::filesystem::path& file, Jobs::Finish then) {
  jobs_.StartSaving(
      [=, this, image = document_.image(), metadata = document_.metadata()](
          Progress& progress, const omb::Remark& remark) {
        const omb::Watching watching([&](double share) { progress.Report(share); });
        omb::WriteImage(file, omb::FormatOfPath(file), image.get(), *metadata, remark);
        return [=, this] {
          document_.MarkSaved(file);
          Remember(file);
        };
      },
      std::move(then));
}

void DocumentFiles::Remember(const std::filesystem::path& file) {
  recent_.Add(file);
  SaveRecentFiles(recent_);
}

void DocumentFiles::Print() {
  const SharedImage image = document_.image();
  const Printer printer = AskForPrinter(owner_, image.get());
  if (!printer) return;
  const std::wstring name = document_.file().filename().wstring();
  jobs_.Start("Printing", [=](Progress& progress, const omb::Remark&) {
    PrintImage(printer.get(), image.get(), name.empty() ? kTitle : name,
               [&](double share) { progress.Report(share); });
    return [] {};
  });
}

}  // namespace ombview
