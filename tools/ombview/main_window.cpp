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
#include "theme.h"
#include "wide.h"

namespace ombview {

namespace {

constexpr UINT kWake = WM_APP;  // a worker has done something
constexpr UINT_PTR kProgressTimer = 1;

// "640 × 480 pixels, 24 bits"
std::wstring ShapeOf(const PackedDib* image) {
  const int bits = omb_DIBBitCount(image);
  return std::to_wstring(omb_DIBWidth(image)) + L" × " + std::to_wstring(omb_DIBHeight(image)) +
         L" pixels, " + std::to_wstring(bits) + (bits == 1 ? L" bit" : L" bits");
}

// What a worker's function returns must be copyable.
template <class T>
std::shared_ptr<T> Shared(T value) {
  return std::make_shared<T>(std::move(value));
}

}  // namespace

MainWindow::MainWindow() {
  UpdateTheme();
  Create(L"OmbviewMain", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, WS_EX_ACCEPTFILES, nullptr);
  SetDpi(static_cast<int>(GetDpiForWindow(handle())));
  const HWND window = handle();
  const auto wake = [window] { PostMessageW(window, kWake, 0, 0); };
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
  sight_.emplace(*view_, *histogram_, wake);
  jobs_.emplace(*status_, Jobs::Events{
                              wake,
                              [this](const std::wstring& why) { Tell(why); },
                              [this] { OnJob(); },
                          });
  files_.emplace(handle(), document_, *jobs_);
  SetUp();
  ShowDocument();
}

void MainWindow::OnJob() {
  if (jobs_->busy()) {
    SetTimer(handle(), kProgressTimer, 100, nullptr);
    return toolbar_->Repaint();
  }
  KillTimer(handle(), kProgressTimer);
  ShowDocument();
  if (closing_) Close();
}

void MainWindow::Stop() {
  if (jobs_->busy()) return jobs_->Cancel();
  view_->Select({});
}

void MainWindow::WaitForJob() {
  MSG message;
  while (jobs_->busy() && GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
}

void MainWindow::Tell(const std::wstring& message) const {
  MessageBoxW(handle(), message.c_str(), kTitle, MB_ICONERROR);
}

// ---- Files ----

void MainWindow::Open(const std::filesystem::path& file) { files_->Open({file}); }

void MainWindow::Close() {
  // A file that is being written is finished first; other work ends with the program.
  closing_ = jobs_->saving();
  if (closing_) return;
  jobs_->Abandon();
  files_->LetGo([this] { DestroyWindow(handle()); });
}

// ---- Clipboard and other windows ----

void MainWindow::Copy() {
  SharedImage image = document_.image();
  jobs_->Start("Copying", [=, this, selection = view_->selection()](Progress&, const omb::Remark&) {
    const SharedImage copied = selection ? SharedImage(PieceOf(image.get(), *selection)) : image;
    return [=, this] {
      if (CopyToClipboard(handle(), copied.get())) return;
      Tell(L"The clipboard does not take the image.");
    };
  });
}

void MainWindow::Paste() {
  files_->LetGo([this] {
    const auto bytes = Shared(BytesOfClipboard(handle()));
    jobs_->Start("Pasting", [=, this](Progress&, const omb::Remark& remark) {
      if (bytes->empty()) throw std::runtime_error("the clipboard has no image");
      const auto image = Shared(ImageOfBytes(*bytes, remark));
      return [=, this] { document_.Put(std::move(*image), "Pasting"); };
    });
  });
}

void MainWindow::CaptureWindow(size_t index) {
  if (index >= windows_.size()) return;
  files_->LetGo([=, this, window = windows_[index].handle] {
    jobs_->Start("Capturing", [=, this](Progress&, const omb::Remark&) {
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
  if (!image || jobs_->busy()) return;
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
  jobs_->Start(call.step->Title(), [=, this](Progress&, const omb::Remark&) {
    const auto result = Shared(After(image.get(), call));
    return [=, this] { document_.Change(std::move(*result), call.step->Title()); };
  });
}

void MainWindow::CropToSelection() {
  if (!view_->selection()) return;
  const Rect keep = *view_->selection();
  view_->Select({});
  const SharedImage image = document_.image();
  jobs_->Start("Crop", [=, this](Progress&, const omb::Remark&) {
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
  if (comparing_ && !preview_ && document_.before()) return sight_->ShowBefore(document_.before());
  sight_->Show(document_.image(), comparing_ ? std::nullopt : preview_);
}

void MainWindow::MeasureImage() { sight_->Measure(show_histogram_ ? document_.image() : nullptr); }

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

// Visible only until the parts of the window are there.
void MainWindow::Paint(Painting& painting) { painting.Fill(ClientRect(), CurrentTheme().ground); }

MenuState MainWindow::State() const {
  return {.document = document_,
          .recent = files_->recent(),
          .busy = jobs_->busy(),
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
    const auto& recent = files_->recent().files();
    if (index < recent.size()) Open(recent[index]);
    return;
  }
  switch (command) {
    case kOpen:
      return files_->OpenByDialog();
    case kSave:
      return files_->Save();
    case kSaveAs:
      return files_->SaveAs();
    case kPrint:
      return files_->Print();
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
  files_->Open(files);
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
    case WM_NCACTIVATE:
    case WM_SETTEXT:
    case WM_EXITMENULOOP: {
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
      jobs_->ShowProgress();
      return 0;
    case kWake:
      jobs_->RunFollowups();
      sight_->RunFollowups();
      return 0;
    case kQueryBusy:
      return jobs_->HasFollowups() || sight_->HasFollowups();
    case WM_CLOSE:
      Close();
      return 0;
    case WM_QUERYENDSESSION: {
      bool let_go = false;
      WaitForJob();
      files_->LetGo([&let_go] { let_go = true; });
      WaitForJob();
      return let_go;
    }
    case WM_DESTROY:
      PostQuitMessage(0);
      return 0;
  }
  return Window::OnMessage(message, wparam, lparam);
}

}  // namespace ombview
