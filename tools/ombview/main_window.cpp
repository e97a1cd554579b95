#include "main_window.h"

#include <commctrl.h>
#include <shellapi.h>

#include <algorithm>
#include <stdexcept>

#include "clipboard.h"
#include "commands.h"
#include "dark_menus.h"
#include "dialogs.h"
#include "errors.h"
#include "parameter_dialog.h"
#include "preview.h"
#include "settings.h"
#include "theme.h"
#include "wide.h"

namespace ombview {

namespace {

constexpr UINT kWake = WM_APP;  // a worker has done something
constexpr UINT_PTR kProgressTimer = 1;
constexpr auto kPatience = std::chrono::milliseconds(300);  // until progress is shown
enum Slot { kSight, kCounts };                              // of what the eyes are for

// "640 × 480 pixels, 24 bits"
std::wstring ShapeOf(const PackedDib* image) {
  const int bits = omb_DIBBitCount(image);
  return std::to_wstring(omb_DIBWidth(image)) + L" × " + std::to_wstring(omb_DIBHeight(image)) +
         L" pixels, " + std::to_wstring(bits) + (bits == 1 ? L" bit" : L" bits");
}

std::wstring TimeOf(std::chrono::duration<double, std::milli> time) {
  wchar_t text[40];
  const double ms = time.count();
  swprintf(text, ARRAYSIZE(text), ms < 1000 ? L"%.1f ms" : L"%.1f s", ms < 1000 ? ms : ms / 1000);
  return text;
}

// A bitmap that a view can draw. Throws std::bad_alloc.
Rendering RenderingOf(const Seen& seen, const Viewport& viewport) {
  GdiObject<HBITMAP> bitmap(omb_DIBToDIBSection(seen.image.get()));
  if (!bitmap) throw std::bad_alloc();
  return {std::move(bitmap), seen.begin, viewport, seen.fixed};
}

// What a worker's function returns must be copyable.
template <class T>
std::shared_ptr<T> Shared(T value) {
  return std::make_shared<T>(std::move(value));
}

// One more window of the program, for one more file.
void StartAnother(const std::filesystem::path& file) {
  wchar_t program[MAX_PATH] = {};
  GetModuleFileNameW(nullptr, program, ARRAYSIZE(program));
  const std::wstring argument = L"\"" + file.native() + L"\"";
  ShellExecuteW(nullptr, L"open", program, argument.c_str(), nullptr, SW_SHOWNORMAL);
}

}  // namespace

MainWindow::MainWindow() {
  UpdateTheme();
  recent_ = LoadRecentFiles();
  Create(L"OmbviewMain", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, WS_EX_ACCEPTFILES, nullptr);
  SetDpi(static_cast<int>(GetDpiForWindow(handle())));
  const HWND window = handle();
  const auto wake = [window] { PostMessageW(window, kWake, 0, 0); };
  hands_.emplace(wake);
  eyes_.emplace(wake);
  toolbar_.emplace(handle(), [this](WORD command) {
    const MenuState state = State();
    return Toolbar::State{IsPossible(command, state), IsOn(command, state)};
  });
  view_.emplace(handle(), ImageView::Events{
                              [this] { ShowView(); },
                              [this](std::optional<Point> pixel) { ShowPixel(pixel); },
                              [this] { ShowView(); },
                          });
  histogram_.emplace(handle());
  status_.emplace(handle());
  SetUp();
  ShowDocument();
}

// ---- Work ----

void MainWindow::Start(const std::string& deed, Work work, Finish then) {
  if (working()) return;
  deed_ = deed;
  begun_ = std::chrono::steady_clock::now();
  SetTimer(handle(), kProgressTimer, 100, nullptr);
  work_ = hands_->Start(0, [=, this](Progress& progress) -> Worker::Followup {
    const auto over = [=, this](const std::wstring& remark, const Finish& finish) {
      return [=, this] {
        work_.reset();
        writing_ = false;
        KillTimer(handle(), kProgressTimer);
        status_->SetProgress(-1);
        if (finish) finish();
        ShowDocument();
        status_->Set(StatusLine::kRemark, remark);
        if (closing_) return Close();
        if (finish && then) then();
      };
    };
    const auto failed = [=, this](const std::wstring& reason) {
      const auto end = over(L"", {});
      return [=, this] {
        end();
        Tell(reason);
      };
    };
    std::string remarks;
    try {
      const Finish finish =
          work(progress, [&](const std::string& remark) { remarks += " · " + remark; });
      progress.Report(1);
      const auto time = std::chrono::steady_clock::now() - begun_;
      return over(Wide(deed) + L": " + TimeOf(time) + Wide(remarks), finish);
    } catch (const Cancelled&) {
      return over(Wide(deed) + L": stopped", {});
    } catch (const std::bad_alloc&) {
      return failed(L"Memory ran out.");
    } catch (const std::exception& error) {
      return failed(Wide(deed + ": " + error.what()));
    }
  });
  ShowProgress();
  toolbar_->Repaint();
}

void MainWindow::Stop() {
  if (working()) {
    work_->Cancel();
    ShowProgress();
  } else {
    view_->Select({});
  }
}

void MainWindow::WaitForWork() {
  MSG message;
  while (working() && GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
}

void MainWindow::Tell(const std::wstring& message) const {
  MessageBoxW(handle(), message.c_str(), kTitle, MB_ICONERROR);
}

void MainWindow::ShowProgress() {
  if (!working() || std::chrono::steady_clock::now() - begun_ < kPatience) return;
  const double share = work_->share();
  std::wstring text = Wide(deed_) + L"…";
  if (share > 0) text += L" " + std::to_wstring(static_cast<int>(100 * share)) + L" %";
  text += work_->cancelled() ? L"  is being stopped" : L"  Esc stops it";
  status_->Set(StatusLine::kRemark, text);
  status_->SetProgress(share);
}

// ---- Files ----

void MainWindow::LetGo(Finish then) {
  if (working()) return;
  const int answer = document_.changed() ? AskToSave(handle(), document_.file()) : IDNO;
  if (answer == IDNO) then();
  if (answer == IDYES) Save(std::move(then));
}

void MainWindow::Open(const std::filesystem::path& file) {
  LetGo([=, this] { OpenNow(file); });
}

void MainWindow::OpenNow(const std::filesystem::path& file) {
  Start("Opening", [=, this](Progress& progress, const omb::Remark& remark) -> Finish {
    const omb::Watching watching([&](double share) { progress.Report(share); });
    const auto image = Shared(omb::ReadImage(file, remark));
    return [=, this] {
      document_.Open(std::move(*image), file);
      Remember(file);
    };
  });
}

void MainWindow::OpenByDialog() {
  LetGo([this] {
    const auto files = AskForFiles(handle());
    if (!files.empty()) OpenNow(files[0]);
    for (size_t i = 1; i < files.size(); ++i) StartAnother(files[i]);
  });
}

void MainWindow::Save(Finish then) {
  try {
    omb::FormatOfPath(document_.file());
  } catch (const omb::FileError&) {  // there is no name, or one that says no format
    return SaveAs(std::move(then));
  }
  SaveTo(document_.file(), std::move(then));
}

void MainWindow::SaveAs(Finish then) {
  const std::filesystem::path file = AskForName(handle(), document_.file());
  if (!file.empty()) SaveTo(file, std::move(then));
}

void MainWindow::SaveTo(const std::filesystem::path& file, Finish then) {
  writing_ = true;
  const SharedImage image = document_.image();
  Start(
      "Saving",
      [=, this](Progress& progress, const omb::Remark&) -> Finish {
        const omb::Watching watching([&](double share) { progress.Report(share); });
        omb::WriteImage(file, omb::FormatOfPath(file), image.get());
        return [=, this] {
          document_.MarkSaved(file);
          Remember(file);
        };
      },
      std::move(then));
}

void MainWindow::Remember(const std::filesystem::path& file) {
  recent_.Add(file);
  SaveRecentFiles(recent_);
}

void MainWindow::Print() {
  const HDC printer = AskForPrinter(handle());
  if (printer == nullptr) return;
  const SharedImage image = document_.image();
  const std::wstring name = document_.file().filename().wstring();
  Start("Printing", [=](Progress&, const omb::Remark&) -> Finish {
    const bool done = PrintImage(printer, image.get(), name.empty() ? kTitle : name);
    DeleteDC(printer);
    if (!done) throw std::runtime_error("the printer does not take the image");
    return [] {};
  });
}

void MainWindow::Close() {
  if (working()) {
    // A file is never cut off; other work is given up with the program.
    work_->Cancel();
    closing_ = writing_;
    if (closing_) return;
    work_.reset();
  }
  closing_ = false;
  LetGo([this] { DestroyWindow(handle()); });
}

// ---- Clipboard and other windows ----

void MainWindow::Copy() {
  SharedImage image = document_.image();
  Start("Copying",
        [=, this, selection = view_->selection()](Progress&, const omb::Remark&) -> Finish {
          const SharedImage copied =
              selection ? SharedImage(PieceOf(image.get(), *selection)) : image;
          return [=, this] {
            if (CopyToClipboard(handle(), copied.get())) return;
            Tell(L"The clipboard does not take the image.");
          };
        });
}

void MainWindow::Paste() {
  LetGo([this] {
    const auto bytes = Shared(BytesOfClipboard(handle()));
    Start("Pasting", [=, this](Progress&, const omb::Remark& remark) -> Finish {
      if (bytes->empty()) throw std::runtime_error("the clipboard has no image");
      const auto image = Shared(ImageOfBytes(*bytes, remark));
      return [=, this] { document_.Put(std::move(*image), "Pasting"); };
    });
  });
}

void MainWindow::CaptureWindow(size_t index) {
  if (index >= windows_.size()) return;
  LetGo([=, this, window = windows_[index].handle] {
    Start("Capturing", [=, this](Progress&, const omb::Remark&) -> Finish {
      const auto image = Shared(Capture(window));
      return [=, this] {
        SetForegroundWindow(handle());
        if (!*image) return Tell(L"Nothing of this window is on the screen.");
        document_.Put(std::move(*image), "Capturing");
      };
    });
  });
}

// ---- Steps ----

void MainWindow::Run(const omb::Step& step) {
  const SharedImage image = document_.image();
  if (!image || working()) return;
  if (step.parameters.empty()) return Apply(omb::ParseCall(step.name));
  auto last = last_arguments_.find(&step);
  if (last == last_arguments_.end()) {
    last = last_arguments_.emplace(&step, FirstArguments(step, image.get())).first;
  }
  const DialogEvents events = {
      [this](const std::optional<omb::Call>& call) {
        preview_ = call;
        Redraw();
      },
      [this](const MSG& message) { return TakesKey(message); },
  };
  const auto call =
      AskForArguments(handle(), step, last->second, image, histogram_->histograms(), events);
  preview_.reset();
  if (!call) return Redraw();
  last->second = call->arguments;
  Apply(*call);
}

void MainWindow::Apply(const omb::Call& call) {
  const SharedImage image = document_.image();
  Start(call.step->Title(), [=, this](Progress&, const omb::Remark&) -> Finish {
    const auto result = Shared(After(image.get(), call));
    return [=, this] { document_.Change(std::move(*result), call.step->Title()); };
  });
}

void MainWindow::CropToSelection() {
  if (!view_->selection()) return;
  const Rect keep = *view_->selection();
  view_->Select({});
  const SharedImage image = document_.image();
  Start("Crop", [=, this](Progress&, const omb::Remark&) -> Finish {
    const auto piece = Shared(PieceOf(image.get(), keep));
    if (!*piece) throw std::bad_alloc();
    return [=, this] { document_.Change(std::move(*piece), "Crop"); };
  });
}

// ---- What is to be seen ----

void MainWindow::ShowDocument() {
  const SharedImage image = document_.image();
  std::wstring title = kTitle;
  if (image) {
    const std::wstring name = document_.file().filename().wstring();
    title =
        (document_.changed() ? L"*" : L"") + (name.empty() ? L"untitled" : name) + L" – " + title;
  }
  SetWindowTextW(handle(), title.c_str());
  view_->SetImageSize(image ? Point{static_cast<int>(omb_DIBWidth(image.get())),
                                    static_cast<int>(omb_DIBHeight(image.get()))}
                            : Point{0, 0});
  status_->Set(StatusLine::kShape, image ? ShapeOf(image.get()) : L"");
  MeasureImage();
  toolbar_->Repaint();
}

void MainWindow::Redraw() {
  const SharedImage before = comparing_ && !preview_ ? document_.before() : nullptr;
  const SharedImage image = before ? before : document_.image();
  if (!image) return eyes_->Drop(kSight);
  const auto preview = comparing_ ? std::nullopt : preview_;
  eyes_->Start(kSight, [=, this, viewport = view_->viewport()](Progress&) -> Worker::Followup {
    std::wstring complaint;
    try {
      Seen seen;
      try {
        seen = preview  ? SeeAfter(image.get(), *preview, viewport)
               : before ? SeeBefore(image.get(), viewport)
                        : See(image.get(), viewport);
      } catch (const omb::StepError&) {  // which is told when the step is to be done
        seen = See(image.get(), viewport);
      }
      const auto rendering = Shared(RenderingOf(seen, viewport));
      return [=, this] { view_->Show(std::move(*rendering)); };
    } catch (const std::bad_alloc&) {
      complaint = L"This image cannot be shown: it is too large for the memory";
    } catch (const std::exception& error) {
      complaint = L"This image cannot be shown: " + Wide(error.what());
    }
    return [=, this] { view_->Complain(complaint); };
  });
}

void MainWindow::MeasureImage() {
  const SharedImage image = document_.image();
  if (!image || !show_histogram_) {
    eyes_->Drop(kCounts);
    return histogram_->Show({});
  }
  eyes_->Start(kCounts, [=, this](Progress&) -> Worker::Followup {
    try {
      const auto histograms = HistogramsOf(image.get());
      return [=, this] { histogram_->Show(histograms); };
    } catch (const std::exception& error) {
      return [=, this, text = Wide(error.what())] { histogram_->Complain(text); };
    }
  });
}

void MainWindow::Compare(bool comparing) {
  if (comparing_ == comparing) return;
  comparing_ = comparing;
  Redraw();
  toolbar_->Repaint();
}

bool MainWindow::TakesKey(const MSG& message) {
  if (message.wParam != VK_F8 || (message.message != WM_KEYDOWN && message.message != WM_KEYUP)) {
    return false;
  }
  Compare(message.message == WM_KEYDOWN);
  return true;
}

void MainWindow::ShowView() {
  if (!view_ || !status_) return;
  const bool image = document_.image() != nullptr;
  wchar_t zoom[20] = {};
  const double percent = 100 * view_->viewport().zoom();
  if (image) swprintf(zoom, ARRAYSIZE(zoom), percent < 9.95 ? L"%.1f %%" : L"%.0f %%", percent);
  status_->Set(StatusLine::kZoom, zoom);
  const auto& selection = view_->selection();
  status_->Set(StatusLine::kSelection, selection
                                           ? std::to_wstring(selection->width()) + L" × " +
                                                 std::to_wstring(selection->height()) + L" selected"
                                           : L"");
  toolbar_->Repaint();
  Redraw();
}

void MainWindow::ShowPixel(std::optional<Point> pixel) {
  const SharedImage image = document_.image();
  status_->Set(StatusLine::kPixel, pixel && image ? std::to_wstring(pixel->x) + L", " +
                                                        std::to_wstring(pixel->y) + L":  " +
                                                        Wide(ValueAt(image.get(), *pixel))
                                                  : L"");
}

void MainWindow::SetUp() {
  const HMENU previous = GetMenu(handle());
  SetMenu(handle(), MakeMenuBar());
  if (previous != nullptr) DestroyMenu(previous);
  ApplyTheme(handle());
  Arrange();
  RedrawWindow(handle(), nullptr, nullptr,
               RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_FRAME | RDW_ERASE);
}

void MainWindow::Arrange() {
  const RECT area = ClientRect();
  const int top = show_toolbar_ ? Toolbar::Height() : 0;
  const int bottom = std::max(top, static_cast<int>(area.bottom) - StatusLine::Height());
  const int pane = show_histogram_ ? HistogramPane::Width() : 0;
  const int width = std::max(0, static_cast<int>(area.right) - pane);
  ShowWindow(toolbar_->handle(), show_toolbar_ ? SW_SHOW : SW_HIDE);
  ShowWindow(histogram_->handle(), show_histogram_ ? SW_SHOW : SW_HIDE);
  MoveWindow(toolbar_->handle(), 0, 0, area.right, top, TRUE);
  MoveWindow(view_->handle(), 0, top, width, bottom - top, TRUE);
  MoveWindow(histogram_->handle(), width, top, pane, bottom - top, TRUE);
  MoveWindow(status_->handle(), 0, bottom, area.right, StatusLine::Height(), TRUE);
}

MenuState MainWindow::State() const {
  return {.document = document_,
          .recent = recent_,
          .busy = working(),
          .fit = view_ && view_->viewport().fit(),
          .selecting = view_ && view_->selecting(),
          .selection = view_ && view_->selection().has_value(),
          .comparing = comparing_,
          .histogram = show_histogram_,
          .toolbar = show_toolbar_};
}

// ---- Messages ----

void MainWindow::OnCommand(WORD command) {
  if (!IsPossible(command, State())) return;
  if (const omb::Step* step = StepOf(command)) return Run(*step);
  if (command >= kFirstWindow) return CaptureWindow(command - size_t{kFirstWindow});
  if (command >= kFirstRecent) {
    const size_t index = command - size_t{kFirstRecent};
    if (index < recent_.files().size()) Open(recent_.files()[index]);
    return;
  }
  switch (command) {
    case kOpen:
      return OpenByDialog();
    case kSave:
      return Save();
    case kSaveAs:
      return SaveAs();
    case kPrint:
      return Print();
    case kExit:
      return Close();
    case kUndo:
      document_.Undo();
      return ShowDocument();
    case kRedo:
      document_.Redo();
      return ShowDocument();
    case kCopy:
      return Copy();
    case kPaste:
      return Paste();
    case kSelectAll: {
      const SharedImage image = document_.image();
      return view_->Select(Rect{0, 0, static_cast<int>(omb_DIBWidth(image.get())),
                                static_cast<int>(omb_DIBHeight(image.get()))});
    }
    case kSelecting:
      view_->SetSelecting(!view_->selecting());
      return toolbar_->Repaint();
    case kCropToSelection:
      return CropToSelection();
    case kFit:
      return view_->Fit();
    case kActualSize:
      return view_->Zoom(1);
    case kZoomIn:
      return view_->Step(true);
    case kZoomOut:
      return view_->Step(false);
    case kCompare:
      return Compare(!comparing_);
    case kHistogram:
      show_histogram_ = !show_histogram_;
      MeasureImage();
      return Arrange();
    case kToolbar:
      show_toolbar_ = !show_toolbar_;
      return Arrange();
    case kStop:
      return Stop();
    case kAbout:
      return ShowAbout(handle());
  }
}

void MainWindow::OnDrop(WPARAM dropped) {
  const auto drop = reinterpret_cast<HDROP>(dropped);
  std::vector<std::filesystem::path> files;
  for (UINT i = 0; i < DragQueryFileW(drop, UINT(-1), nullptr, 0); ++i) {
    std::wstring name(DragQueryFileW(drop, i, nullptr, 0), L'\0');
    DragQueryFileW(drop, i, name.data(), static_cast<UINT>(name.size()) + 1);
    files.emplace_back(name);
  }
  DragFinish(drop);
  if (files.empty()) return;
  Open(files[0]);
  for (size_t i = 1; i < files.size(); ++i) StartAnother(files[i]);
}

void MainWindow::OnMenu(HMENU menu) {
  if (IsCaptureMenu(menu)) {
    windows_ = OpenWindows(handle());
    FillCaptureMenu(menu, windows_);
  } else {
    UpdateMenu(menu, State());
  }
}

LRESULT MainWindow::OnMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_SIZE:
      if (status_) Arrange();
      return 0;
    case WM_DPICHANGED: {
      SetDpi(HIWORD(wparam));
      const auto* wanted = reinterpret_cast<const RECT*>(lparam);
      SetWindowPos(handle(), nullptr, wanted->left, wanted->top, wanted->right - wanted->left,
                   wanted->bottom - wanted->top, SWP_NOZORDER | SWP_NOACTIVATE);
      SetUp();
      return 0;
    }
    case WM_SETTINGCHANGE:
      if (UpdateTheme()) SetUp();
      return 0;
    case WM_COMMAND:
      OnCommand(LOWORD(wparam));
      return 0;
    case WM_INITMENUPOPUP:
      OnMenu(reinterpret_cast<HMENU>(wparam));
      return 0;
    case WM_MEASUREITEM:
      MeasureMenuItem(handle(), *reinterpret_cast<MEASUREITEMSTRUCT*>(lparam));
      return TRUE;
    case WM_DRAWITEM:
      DrawMenuItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(lparam));
      return TRUE;
    case WM_MENUCHAR:
      if (!CurrentTheme().dark) break;
      return ChooseByLetter(reinterpret_cast<HMENU>(lparam), static_cast<wchar_t>(LOWORD(wparam)));
    case WM_NCPAINT:
    case WM_NCACTIVATE: {
      const LRESULT result = Window::OnMessage(message, wparam, lparam);
      PaintRestOfMenuBar(handle());
      return result;
    }
    case WM_DROPFILES:
      OnDrop(wparam);
      return 0;
    case WM_MOUSEWHEEL:
    case WM_MOUSEHWHEEL:
      return SendMessageW(view_->handle(), message, wparam, lparam);
    case WM_TIMER:
      ShowProgress();
      return 0;
    case kWake:
      hands_->RunFollowups();
      eyes_->RunFollowups();
      return 0;
    case kQueryBusy:
      return hands_->busy() || eyes_->busy();
    case WM_CLOSE:
      Close();
      return 0;
    case WM_QUERYENDSESSION: {
      bool let_go = false;
      WaitForWork();
      LetGo([&let_go] { let_go = true; });
      WaitForWork();
      return let_go;
    }
    case WM_DESTROY:
      PostQuitMessage(0);
      return 0;
  }
  return Window::OnMessage(message, wparam, lparam);
}

}  // namespace ombview
