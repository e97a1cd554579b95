#include "main_window.h"

#include <commctrl.h>
#include <commdlg.h>
#include <shellapi.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "clipboard.h"
#include "commands.h"
#include "menus.h"
#include "parameter_dialog.h"
#include "wide.h"

namespace ombview {

namespace {

constexpr const wchar_t* kTitle = L"ombview";
constexpr DWORD kLongestPath = 32768;

// Shows that something takes its time.
class WaitCursor {
 public:
  WaitCursor() : previous_(SetCursor(LoadCursorW(nullptr, IDC_WAIT))) {}
  ~WaitCursor() { SetCursor(previous_); }
  WaitCursor(const WaitCursor&) = delete;
  WaitCursor& operator=(const WaitCursor&) = delete;

 private:
  HCURSOR previous_;
};

// "640 × 480 pixels, 24 bits"
std::wstring ShapeOf(const PackedDib* image) {
  const int bits = omb_DIBBitCount(image);
  return std::to_wstring(omb_DIBWidth(image)) + L" × " + std::to_wstring(omb_DIBHeight(image)) +
         L" pixels, " + std::to_wstring(bits) + (bits == 1 ? L" bit" : L" bits");
}

// The name that a person chooses for a file to open or to save; empty when it was cancelled.
std::filesystem::path ChooseFile(HWND owner, const std::filesystem::path& proposal, bool save) {
  constexpr const wchar_t* kImages =
      L"Images\0*.bmp;*.dib;*.png;*.jpg;*.jpeg;*.jpe;*.jfif;*.tif;*.tiff\0All files\0*.*\0";
  constexpr const wchar_t* kFormats =
      L"PNG\0*.png\0BMP\0*.bmp\0JPEG\0*.jpg\0TIFF\0*.tif\0All files\0*.*\0";
  std::wstring name = proposal.native();
  name.resize(kLongestPath);
  OPENFILENAMEW dialog = {};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = owner;
  dialog.lpstrFilter = save ? kFormats : kImages;
  dialog.lpstrFile = name.data();
  dialog.nMaxFile = kLongestPath;
  dialog.lpstrDefExt = save ? L"png" : nullptr;
  dialog.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR |
                 (save ? OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST : OFN_FILEMUSTEXIST);
  const BOOL chosen = save ? GetSaveFileNameW(&dialog) : GetOpenFileNameW(&dialog);
  return chosen ? std::filesystem::path(name.c_str()) : std::filesystem::path();
}

}  // namespace

MainWindow::MainWindow() {
  Create(L"OmbviewMain", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, WS_EX_ACCEPTFILES, nullptr);
  SetMenu(handle(), MakeMenuBar());
  status_ = CreateWindowExW(0, STATUSCLASSNAMEW, nullptr, WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, 0,
                            0, 0, 0, handle(), nullptr, nullptr, nullptr);
  view_.emplace(handle());
  histogram_.emplace(handle());
  ShowDocument();
  ShowStatus(L"");
  Arrange();
}

void MainWindow::Open(const std::filesystem::path& file) {
  Do("opening", [&] { document_.Open(file, remark_); });
}

void MainWindow::Do(const std::string& deed, const std::function<void()>& action) {
  const WaitCursor waiting;
  remarks_.clear();
  try {
    const auto start = std::chrono::steady_clock::now();
    action();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    wchar_t taken[40];
    swprintf(taken, ARRAYSIZE(taken), L": %.1f ms", time.count());
    ShowDocument();
    ShowStatus(Wide(deed) + taken + Wide(remarks_));
  } catch (const std::bad_alloc&) {
    MessageBoxW(handle(), L"Memory ran out.", kTitle, MB_ICONERROR);
  } catch (const std::exception& error) {
    MessageBoxW(handle(), Wide(deed + ": " + error.what()).c_str(), kTitle, MB_ICONERROR);
  }
}

void MainWindow::OpenByDialog() {
  const std::filesystem::path file = ChooseFile(handle(), {}, false);
  if (!file.empty()) Open(file);
}

void MainWindow::SaveByDialog() {
  if (document_.image() == nullptr) return;
  const std::filesystem::path file = ChooseFile(handle(), document_.file(), true);
  if (!file.empty()) Do("saving", [&] { document_.SaveAs(file); });
}

void MainWindow::Run(const omb::Step& step) {
  const PackedDib* image = document_.image();
  if (image == nullptr) return;
  auto last = last_arguments_.find(&step);
  if (last == last_arguments_.end()) {
    last =
        last_arguments_.emplace(&step, omb::ParseCall(step.ExampleCalls(image)[0]).arguments).first;
  }
  if (!step.parameters.empty()) {
    const auto call = AskForArguments(handle(), step, last->second);
    if (!call) return;
    last->second = call->arguments;
  }
  Do(step.name, [&] { document_.Apply({&step, last->second}); });
}

void MainWindow::CaptureWindow(size_t index) {
  if (index >= windows_.size()) return;
  Do("capture", [&] {
    omb::Image image = Capture(windows_[index].handle);
    SetForegroundWindow(handle());
    if (!image) throw std::runtime_error("nothing of this window is on the screen");
    document_.Put(std::move(image), "capture");
  });
}

bool MainWindow::MayClose() const {
  return !document_.changed() ||
         MessageBoxW(handle(), L"The image is not saved. Close all the same?", kTitle,
                     MB_OKCANCEL | MB_ICONQUESTION) == IDOK;
}

void MainWindow::OnCommand(WORD command) {
  if (const omb::Step* step = StepOf(command)) return Run(*step);
  if (command >= kFirstWindow) return CaptureWindow(command - size_t{kFirstWindow});
  switch (command) {
    case kOpen:
      return OpenByDialog();
    case kSaveAs:
      return SaveByDialog();
    case kExit:
      SendMessageW(handle(), WM_CLOSE, 0, 0);
      return;
    case kUndo:
      if (document_.undo() != nullptr) Do("undo", [&] { document_.Undo(); });
      return;
    case kRedo:
      if (document_.redo() != nullptr) Do("redo", [&] { document_.Redo(); });
      return;
    case kCopy:
      if (document_.image() == nullptr) return;
      return Do("copy", [&] {
        if (CopyToClipboard(handle(), document_.image())) return;
        throw std::runtime_error("the clipboard does not take the image");
      });
    case kPaste:
      return Do("paste", [&] {
        omb::Image image = ImageOfClipboard(handle(), remark_);
        if (!image) throw std::runtime_error("the clipboard has no image");
        document_.Put(std::move(image), "paste");
      });
    case kFit:
      return view_->SetFit(!view_->fit());
    case kHistogram:
      show_histogram_ = !show_histogram_;
      return Arrange();
  }
}

void MainWindow::OnDrop(WPARAM dropped) {
  const auto drop = reinterpret_cast<HDROP>(dropped);
  std::wstring name(kLongestPath, L'\0');
  name.resize(DragQueryFileW(drop, 0, name.data(), kLongestPath));
  DragFinish(drop);
  Open(name);
}

void MainWindow::OnMenu(HMENU menu) {
  if (IsCaptureMenu(menu)) {
    windows_ = OpenWindows(handle());
    FillCaptureMenu(menu, windows_);
  } else {
    UpdateMenu(menu, {document_, view_->fit(), show_histogram_});
  }
}

void MainWindow::ShowDocument() {
  const PackedDib* image = document_.image();
  view_->Show(image);
  histogram_->Show(image);
  std::wstring title = kTitle;
  if (image != nullptr) {
    const std::wstring name = document_.file().filename().wstring();
    title =
        (document_.changed() ? L"*" : L"") + (name.empty() ? L"untitled" : name) + L" – " + title;
  }
  SetWindowTextW(handle(), title.c_str());
}

void MainWindow::ShowStatus(const std::wstring& remark) {
  const PackedDib* image = document_.image();
  const int parts[] = {Scaled(220), -1};
  SendMessageW(status_, SB_SETPARTS, ARRAYSIZE(parts), reinterpret_cast<LPARAM>(parts));
  const std::wstring shape = image == nullptr ? L"" : ShapeOf(image);
  SendMessageW(status_, SB_SETTEXTW, 0, reinterpret_cast<LPARAM>(shape.c_str()));
  SendMessageW(status_, SB_SETTEXTW, 1, reinterpret_cast<LPARAM>(remark.c_str()));
}

void MainWindow::Arrange() {
  SendMessageW(status_, WM_SIZE, 0, 0);
  InvalidateRect(status_, nullptr, TRUE);
  RECT status = {};
  GetWindowRect(status_, &status);
  const RECT area = ClientRect();
  const int height = std::max(0L, area.bottom - (status.bottom - status.top));
  const int pane = show_histogram_ ? HistogramPane::Width() : 0;
  const int width = std::max(0L, area.right - pane);
  MoveWindow(view_->handle(), 0, 0, width, height, TRUE);
  ShowWindow(histogram_->handle(), show_histogram_ ? SW_SHOW : SW_HIDE);
  MoveWindow(histogram_->handle(), width, 0, pane, height, TRUE);
}

LRESULT MainWindow::OnMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_SIZE:
      if (histogram_) Arrange();
      return 0;
    case WM_COMMAND:
      OnCommand(LOWORD(wparam));
      return 0;
    case WM_INITMENUPOPUP:
      OnMenu(reinterpret_cast<HMENU>(wparam));
      return 0;
    case WM_DROPFILES:
      OnDrop(wparam);
      return 0;
    case WM_MOUSEWHEEL:
    case WM_MOUSEHWHEEL:
      return SendMessageW(view_->handle(), message, wparam, lparam);
    case WM_CLOSE:
      if (MayClose()) DestroyWindow(handle());
      return 0;
    case WM_DESTROY:
      PostQuitMessage(0);
      return 0;
  }
  return Window::OnMessage(message, wparam, lparam);
}

}  // namespace ombview
