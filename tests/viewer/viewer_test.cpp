// The viewer as a program: started on a file, driven by messages, judged by what its window shows
// and by the file that it saves. Argument: the path of ombview.exe.
#include <gtest/gtest.h>
#include <windows.h>
// The others build on it.
#include <commctrl.h>
#include <commdlg.h>
#include <dlgs.h>

#include <cstring>
#include <functional>
#include <optional>

#include "host/files.h"
#include "ombview/commands.h"
#include "ombview/document.h"
#include "ombview/parameter_dialog.h"
#include "ombview/printing.h"
#include "ombview/rendering.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

namespace fs = std::filesystem;

std::wstring viewer_path;

void PumpMessages() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
}

bool WaitFor(const std::function<bool()>& condition, DWORD milliseconds = 60000) {
  const ULONGLONG end = GetTickCount64() + milliseconds;
  while (!condition()) {
    if (GetTickCount64() > end) return false;
    PumpMessages();
    Sleep(10);
  }
  return true;
}

std::wstring TextOf(HWND window) {
  wchar_t text[300] = {};
  SendMessageW(window, WM_GETTEXT, ARRAYSIZE(text), reinterpret_cast<LPARAM>(text));
  return text;
}

class Viewer {
 public:
  explicit Viewer(const fs::path& file) {
    std::wstring command = L"\"" + viewer_path + L"\" \"" + file.native() + L"\"";
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &process_)) {
      return;
    }
    WaitFor([&] {
      main_ = FindWindowW(L"OmbviewMain", nullptr);
      return main_ != nullptr && TextOf(main_).starts_with(file.filename().native());
    });
    view_ = FindWindowExW(main_, nullptr, L"OmbviewImage", nullptr);
    MoveWindow(main_, 0, 0, 900, 600, TRUE);
  }
  ~Viewer() {
    TerminateProcess(process_.hProcess, 1);
    CloseHandle(process_.hProcess);
    CloseHandle(process_.hThread);
  }

  HWND main() const { return main_; }
  HWND view() const { return view_; }

  // All that was asked for is done and shown.
  void WaitUntilIdle() const {
    EXPECT_TRUE(WaitFor([&] { return SendMessageW(main_, ombview::kQueryBusy, 0, 0) == 0; }));
  }

  // A command that asks nothing is done when this returns.
  void Do(WORD command) const {
    SendMessageW(main_, WM_COMMAND, command, 0);
    WaitUntilIdle();
  }
  void Do(const char* step) const { Do(ombview::CommandOf(omb::StepNamed(step))); }
  // Others open a dialog.
  HWND Dialog(UINT message, WPARAM wparam) const {
    PostMessageW(main_, message, wparam, 0);
    HWND dialog = nullptr;
    EXPECT_TRUE(WaitFor([&] {
      dialog = GetLastActivePopup(main_);
      return dialog != nullptr && dialog != main_ && IsWindowVisible(dialog);
    }));
    return dialog;
  }
  void Enter(HWND dialog, int control, const wchar_t* text) const {
    ASSERT_NE(GetDlgItem(dialog, control), nullptr);
    SendMessageW(GetDlgItem(dialog, control), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
  }
  void Press(HWND dialog, WORD button) const {
    PostMessageW(dialog, WM_COMMAND, button, 0);
    EXPECT_TRUE(WaitFor([&] { return !IsWindow(dialog); }));
    WaitUntilIdle();
  }
  // The question about unsaved work, which lets its buttons be pressed in a way of its own.
  void Answer(HWND question, WORD button) const {
    SendMessageW(question, TDM_CLICK_BUTTON, button, 0);
    EXPECT_TRUE(WaitFor([&] { return !IsWindow(question); }));
    WaitUntilIdle();
  }
  void Type(HWND window, const wchar_t* text) const {
    for (; *text != 0; ++text) SendMessageW(window, WM_CHAR, *text, 0);
  }
  void Drag(UINT buttons, POINT from, POINT to) const {
    SendMessageW(view_, WM_LBUTTONDOWN, MK_LBUTTON | buttons, MAKELPARAM(from.x, from.y));
    SendMessageW(view_, WM_MOUSEMOVE, MK_LBUTTON | buttons, MAKELPARAM(to.x, to.y));
    SendMessageW(view_, WM_LBUTTONUP, buttons, MAKELPARAM(to.x, to.y));
  }

  // All that the image's part of the window shows.
  TestImage Screen() const {
    WaitUntilIdle();
    SetForegroundWindow(main_);
    RedrawWindow(main_, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    Sleep(100);
    return TestImage(reinterpret_cast<PackedDib*>(omb_CopyWindowToDIB(view_, 2)));
  }

  // Whether the window shows this image in its middle.
  testing::AssertionResult Shows(const PackedDib* image) const {
    TestImage screen = Screen();
    const int width = static_cast<int>(omb_DIBWidth(image));
    const int height = static_cast<int>(omb_DIBHeight(image));
    const int x = (screen.width() - width) / 2, y = (screen.height() - height) / 2;
    const OmbRect rectangle = {x, y, x + width - 1, y + height - 1};
    if (omb_crop(screen.ref(), &rectangle) == 0) {
      return testing::AssertionFailure() << "the image is larger than the window";
    }
    const std::vector<uint32_t> shown = screen.Colors();
    const std::vector<uint32_t> wanted = TestImage(ombview::CopyOf(image).release()).Colors();
    for (size_t i = 0; i < wanted.size(); ++i) {
      if (shown[i] == wanted[i]) continue;
      return testing::AssertionFailure()
             << "pixel " << i << ": " << std::hex << shown[i] << " instead of " << wanted[i];
    }
    return testing::AssertionSuccess();
  }

  DWORD WaitForEnd() const {
    DWORD code = STILL_ACTIVE;
    WaitForSingleObject(process_.hProcess, 60000);
    GetExitCodeProcess(process_.hProcess, &code);
    return code;
  }

 private:
  PROCESS_INFORMATION process_ = {};
  HWND main_ = nullptr, view_ = nullptr;
};

omb::Image After(const PackedDib* image, const char* step) {
  return ombview::After(image, omb::ParseCall(step));
}

std::vector<uint32_t> ColorsOf(const fs::path& file) {
  return TestImage(omb::ReadImage(file, {}).release()).Colors();
}

void PutOnClipboard(const TestImage& image) {
  const std::vector<uint8_t> bytes = image.Bytes();
  const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
  std::memcpy(GlobalLock(block), bytes.data(), bytes.size());
  GlobalUnlock(block);
  ASSERT_TRUE(WaitFor([] { return OpenClipboard(nullptr) != 0; }));
  EmptyClipboard();
  SetClipboardData(CF_DIB, block);
  CloseClipboard();
}

std::vector<uint8_t> BytesOnClipboard() {
  EXPECT_TRUE(WaitFor([] { return OpenClipboard(nullptr) != 0; }));
  const HGLOBAL block = GetClipboardData(CF_DIB);
  const auto* bytes = static_cast<const uint8_t*>(GlobalLock(block));
  std::vector<uint8_t> copy(bytes, bytes + (bytes == nullptr ? 0 : GlobalSize(block)));
  GlobalUnlock(block);
  CloseClipboard();
  return copy;
}

// A page of white paper, drawn on.
TestImage Print(const PackedDib* image, const ombview::Paper& paper) {
  const ombview::Rect& part = paper.printable;
  TestImage page = ImageBuilder(24, part.width(), part.height()).Pixels(Noise(1, 1)).Build();
  omb_invert(page.get());
  const HDC dc = CreateCompatibleDC(nullptr);
  const HBITMAP bitmap = omb_DIBToDIBSection(page.get());
  const HGDIOBJ previous = SelectObject(dc, bitmap);
  ombview::DrawOnPage(dc, paper, image, [](double) {});
  SelectObject(dc, previous);
  DeleteDC(dc);
  TestImage drawn(reinterpret_cast<PackedDib*>(omb_bmtodib(bitmap, nullptr)));
  DeleteObject(bitmap);
  return drawn;
}

TEST(Printing, ReducesAndEnlargesInTheMiddleOfThePage) {
  const ombview::Paper paper = {{480, 330}, {10, 20, 460, 320}, {100, 100}};
  // 400 x 250 dots are between the margins of 40.
  const TestImage large = ImageBuilder(24, 1600, 1000)
                              .Pixels([](int x, int y) { return Rgb(x / 7, y / 5, x * y / 9000); })
                              .Build();
  TestImage reduced(ombview::CopyOf(large.get()).release());
  omb_resize(reduced.ref(), 400, 250, OMB_RESIZE_BOX);
  // Enlarging may mix neighbours, so four fields are looked at apart from their edges.
  const auto field = [](int x, int y) { return (x < 8 ? 3u : 5u) << (y < 5 ? 0 : 1); };
  const TestImage small = ImageBuilder(4, 16, 10).Colors(VariedColors(16, 2)).Pixels(field).Build();
  const TestImage page = Print(large.get(), paper), other = Print(small.get(), paper);
  for (int y = 0; y < page.height(); ++y) {
    for (int x = 0; x < page.width(); ++x) {
      const int column = x - 30, row = y - 20;
      const bool beside = column < 0 || row < 0 || column >= 400 || row >= 250;
      ASSERT_EQ(page.Pixel(x, y), beside ? 0xFFFFFF : reduced.Pixel(column, row)) << x << " " << y;
      if (beside ||
          (column % 200 >= 40 && column % 200 < 160 && row % 125 >= 40 && row % 125 < 85)) {
        ASSERT_EQ(other.Pixel(x, y),
                  beside ? 0xFFFFFF : small.Color(static_cast<int>(field(column / 25, row / 25))));
      }
    }
  }
}

class ViewerTest : public testing::Test {
 protected:
  ViewerTest()
      : image_(ImageBuilder(24, 150, 90).Pixels(Noise(0x1000000, 5)).Build()),
        file_(directory_ / fs::path(u8"Größe 写真.bmp")) {
    Save(file_, Encode(omb::Format::kBmp, image_.get()));
    viewer_.emplace(file_);
  }

  Directory directory_;
  TestImage image_;
  fs::path file_;
  std::optional<Viewer> viewer_;
};

TEST_F(ViewerTest, WorksOnFilesByMenusAndDialogs) {
  const Viewer& viewer = *viewer_;
  ASSERT_NE(viewer.view(), nullptr);
  EXPECT_TRUE(viewer.Shows(image_.get()));

  const omb::Image inverted = After(image_.get(), "invert");
  viewer.Do("invert");
  EXPECT_TRUE(viewer.Shows(inverted.get()));
  EXPECT_TRUE(TextOf(viewer.main()).starts_with(L"*"));
  viewer.Do(ombview::kUndo);
  EXPECT_TRUE(viewer.Shows(image_.get()));
  viewer.Do(ombview::kRedo);
  EXPECT_TRUE(viewer.Shows(inverted.get()));

  // The first field is selected; the effect is seen while the dialog is open, and gone when it is
  // cancelled. It stays until its arguments can be understood.
  const WORD step = ombview::CommandOf(omb::StepNamed("brightnesscontrast"));
  const int first = ombview::kFirstParameter;
  HWND dialog = viewer.Dialog(WM_COMMAND, step);
  EXPECT_EQ(TextOf(dialog), L"Brightness and contrast");
  viewer.Type(GetDlgItem(dialog, first), L"60");
  EXPECT_EQ(TextOf(GetDlgItem(dialog, first)), L"60");
  viewer.Enter(dialog, first + 1, L"-30");
  const omb::Image adjusted = After(inverted.get(), "brightnesscontrast=60,-30");
  EXPECT_TRUE(viewer.Shows(adjusted.get()));
  viewer.Press(dialog, IDCANCEL);
  EXPECT_TRUE(viewer.Shows(inverted.get()));

  dialog = viewer.Dialog(WM_COMMAND, step);
  for (const wchar_t* senseless : {L"bright", L"4500", L""}) {
    viewer.Enter(dialog, first, senseless);
    SendMessageW(dialog, WM_COMMAND, IDOK, 0);
    ASSERT_TRUE(IsWindow(dialog));
    EXPECT_TRUE(viewer.Shows(inverted.get()));
  }
  viewer.Enter(dialog, first + 1, L"-30");
  // A slider, by its place.
  const HWND slider = GetDlgItem(dialog, ombview::kFirstSlider);
  SendMessageW(slider, TBM_SETPOS, TRUE, 60 + 255);
  SendMessageW(dialog, WM_HSCROLL, TB_THUMBTRACK, reinterpret_cast<LPARAM>(slider));
  EXPECT_EQ(TextOf(GetDlgItem(dialog, first)), L"60");
  viewer.Press(dialog, IDOK);
  EXPECT_TRUE(viewer.Shows(adjusted.get()));
  viewer.Do(ombview::kCompare);
  EXPECT_TRUE(viewer.Shows(inverted.get()));
  viewer.Do(ombview::kCompare);

  // Choices have names; the library's numbers are nobody's matter.
  dialog = viewer.Dialog(WM_COMMAND, ombview::CommandOf(omb::StepNamed("emboss")));
  viewer.Enter(dialog, first, L"strong-up-left");
  viewer.Press(dialog, IDOK);
  EXPECT_TRUE(viewer.Shows(After(adjusted.get(), "emboss=23").get()));
  viewer.Do(ombview::kUndo);

  viewer.Do("gray");
  const fs::path saved = directory_ / fs::path(u8"Später.png");
  dialog = viewer.Dialog(WM_COMMAND, ombview::kSaveAs);
  viewer.Enter(dialog, GetDlgItem(dialog, edt1) != nullptr ? edt1 : cmb13, saved.c_str());
  viewer.Press(dialog, IDOK);
  ASSERT_TRUE(WaitFor([&] { return TextOf(viewer.main()).starts_with(L"Später.png"); }));
  EXPECT_EQ(ColorsOf(saved), TestImage(After(adjusted.get(), "gray").release()).Colors());

  // From now on saving asks nothing.
  viewer.Do("invert");
  viewer.Do(ombview::kSave);
  EXPECT_TRUE(TextOf(viewer.main()).starts_with(L"Später.png"));
  EXPECT_EQ(ColorsOf(saved),
            TestImage(After(After(adjusted.get(), "gray").get(), "invert").release()).Colors());
}

TEST_F(ViewerTest, AsksForUnsavedWork) {
  const Viewer& viewer = *viewer_;
  ASSERT_NE(viewer.view(), nullptr);
  viewer.Do("fliphor");
  const omb::Image mirrored = After(image_.get(), "fliphor");
  PutOnClipboard(image_);
  // Whatever would take the image's place.
  for (const auto& [message, command] : {std::pair<UINT, WPARAM>(WM_CLOSE, 0),
                                         {WM_COMMAND, ombview::kPaste},
                                         {WM_COMMAND, ombview::kOpen},
                                         {WM_COMMAND, ombview::kFirstRecent},
                                         {WM_QUERYENDSESSION, 0}}) {
    viewer.Answer(viewer.Dialog(message, command), IDCANCEL);
    ASSERT_TRUE(IsWindow(viewer.main()));
    EXPECT_TRUE(TextOf(viewer.main()).starts_with(L"*"));
    EXPECT_TRUE(viewer.Shows(mirrored.get()));
  }
  viewer.Answer(viewer.Dialog(WM_COMMAND, ombview::kPaste), IDYES);
  EXPECT_EQ(ColorsOf(file_), TestImage(ombview::CopyOf(mirrored.get()).release()).Colors());
  EXPECT_TRUE(viewer.Shows(image_.get()));
  EXPECT_TRUE(TextOf(viewer.main()).starts_with(L"*untitled"));
  SendMessageW(viewer.Dialog(WM_CLOSE, 0), TDM_CLICK_BUTTON, IDNO, 0);
  EXPECT_EQ(viewer.WaitForEnd(), 0u);
}

TEST_F(ViewerTest, ZoomsPansAndSelects) {
  const Viewer& viewer = *viewer_;
  ASSERT_NE(viewer.view(), nullptr);
  viewer.Do(ombview::kCopy);
  EXPECT_EQ(BytesOnClipboard(), image_.Bytes());

  const TestImage large = ImageBuilder(24, 2000, 1500)
                              .Pixels([](int x, int y) { return Rgb(x / 9, y / 7, x * y / 9000); })
                              .Build();
  PutOnClipboard(large);
  viewer.Do(ombview::kPaste);
  const TestImage fitted = viewer.Screen();
  ombview::Viewport viewport;
  viewport.SetArea(fitted.width(), fitted.height());
  viewport.SetImage(2000, 1500);
  EXPECT_TRUE(viewer.Shows(ombview::Render(large.get(), viewport).get()));

  // In its own size it fills the window, the middle in the middle; then a drag moves it.
  viewer.Do(ombview::kActualSize);
  TestImage screen = viewer.Screen();
  EXPECT_LT(screen.width(), fitted.width());  // for the scroll bar
  const int x = screen.width() / 3, y = screen.height() / 4;
  const uint32_t before = screen.Pixel(x, y);
  viewer.Drag(0, {200, 200}, {170, 260});
  screen = viewer.Screen();
  EXPECT_EQ(screen.Pixel(x - 30, y + 60), before);
  // The wheel zooms around the pointer, to 150 and 200 %.
  const uint32_t under = screen.Pixel(100, 80);
  POINT pointer = {100, 80};
  ClientToScreen(viewer.view(), &pointer);
  for (int i = 0; i < 2; ++i) {
    SendMessageW(viewer.view(), WM_MOUSEWHEEL, MAKEWPARAM(MK_CONTROL, WHEEL_DELTA),
                 MAKELPARAM(pointer.x, pointer.y));
  }
  screen = viewer.Screen();
  EXPECT_EQ(screen.Pixel(100, 80), under);
  EXPECT_TRUE(screen.Pixel(100, 80) == screen.Pixel(101, 80) ||
              screen.Pixel(100, 80) == screen.Pixel(99, 80));

  // A rectangle drawn with the mouse is copied and kept.
  viewer.Do(ombview::kUndo);
  viewer.Do(ombview::kFit);
  screen = viewer.Screen();
  const int left = (screen.width() - 150) / 2, top = (screen.height() - 90) / 2;
  viewer.Drag(MK_SHIFT, {left + 110, top + 70}, {left + 10, top + 20});
  const TestImage piece(ombview::PieceOf(image_.get(), {10, 20, 110, 70}).release());
  viewer.Do(ombview::kCopy);
  EXPECT_EQ(BytesOnClipboard(), piece.Bytes());
  viewer.Do(ombview::kCropToSelection);
  EXPECT_TRUE(viewer.Shows(piece.get()));
}

// A window in stripes.
LRESULT CALLBACK PaintStripes(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message != WM_PAINT) return DefWindowProcW(window, message, wparam, lparam);
  PAINTSTRUCT paint;
  const HDC dc = BeginPaint(window, &paint);
  for (int x = 0; x < 200; ++x) {
    const RECT column = {x, 0, x + 1, 100};
    SetDCBrushColor(dc, RGB(x, 255 - x, 77));
    FillRect(dc, &column, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
  }
  EndPaint(window, &paint);
  return 0;
}

int OpenMenus() {
  int count = 0;
  for (HWND menu = nullptr; (menu = FindWindowExW(nullptr, menu, L"#32768", nullptr)) != nullptr;) {
    count += IsWindowVisible(menu) ? 1 : 0;
  }
  return count;
}

TEST_F(ViewerTest, CapturesTheWindowThatTheMenuNames) {
  const Viewer& viewer = *viewer_;
  ASSERT_NE(viewer.view(), nullptr);
  WNDCLASSW stripes = {};
  stripes.lpfnWndProc = PaintStripes;
  stripes.lpszClassName = L"Stripes";
  RegisterClassW(&stripes);
  const HWND window = CreateWindowExW(0, L"Stripes", L"Stripes", WS_POPUP | WS_VISIBLE, 950, 100,
                                      200, 100, nullptr, nullptr, nullptr, nullptr);
  PumpMessages();
  // The file menu, the list of windows in it, and the topmost one there.
  PostMessageW(viewer.main(), WM_SYSCOMMAND, SC_KEYMENU, 'f');
  ASSERT_TRUE(WaitFor([] { return OpenMenus() == 1; }));
  PostMessageW(viewer.main(), WM_CHAR, 'c', 0);
  ASSERT_TRUE(WaitFor([] { return OpenMenus() == 2; }));
  PostMessageW(viewer.main(), WM_KEYDOWN, VK_RETURN, 0);
  EXPECT_TRUE(WaitFor([&] { return TextOf(viewer.main()).starts_with(L"*untitled"); }, 20000));
  const TestImage expected =
      ImageBuilder(24, 200, 100).Pixels([](int x, int) { return Rgb(x, 255 - x, 77); }).Build();
  EXPECT_TRUE(viewer.Shows(expected.get()));
  DestroyWindow(window);
}

}  // namespace
}  // namespace ombrilo::test

int wmain(int argc, wchar_t** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (argc > 1) ombrilo::test::viewer_path = argv[1];
  return RUN_ALL_TESTS();
}
