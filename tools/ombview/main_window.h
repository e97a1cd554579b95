// The viewer's window: menus and toolbar above, the image with its histogram, a line of remarks
// below. It only asks and shows; whatever takes time runs on two workers, one for what the person
// asked for and one for what is to be seen.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>

#include "capture.h"
#include "document.h"
#include "histogram_pane.h"
#include "image_view.h"
#include "menus.h"
#include "recent_files.h"
#include "status_line.h"
#include "toolbar.h"
#include "window.h"
#include "worker.h"

namespace ombview {

class MainWindow : public Window {
 public:
  MainWindow();

  // Asks for unsaved work first.
  void Open(const std::filesystem::path& file);
  // Keys that are held down rather than pressed. True when the message is dealt with.
  bool TakesKey(const MSG& message);

 private:
  using Finish = std::function<void()>;
  using Work = std::function<Finish(Progress&, const omb::Remark&)>;

  LRESULT OnMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  void OnCommand(WORD command);
  void OnDrop(WPARAM dropped);
  void OnMenu(HMENU menu);

  // Begins work; what it returns is run here when it is done, then `then`. What it throws is told
  // to the person.
  void Start(const std::string& deed, Work work, Finish then = {});
  void Stop();
  bool working() const { return work_ != nullptr; }
  void WaitForWork();
  void Tell(const std::wstring& message) const;

  // Goes on with `then` unless the image holds unsaved work that the person wants to keep.
  void LetGo(Finish then);
  void OpenByDialog();
  void OpenNow(const std::filesystem::path& file);
  void Save(Finish then = {});
  void SaveAs(Finish then = {});
  void SaveTo(const std::filesystem::path& file, Finish then);
  void Print();
  void Close();
  void Copy();
  void Paste();
  void CropToSelection();
  void Run(const omb::Step& step);
  void Apply(const omb::Call& call);
  void CaptureWindow(size_t index);
  void Remember(const std::filesystem::path& file);

  // What is to be seen, anew.
  void ShowDocument();
  void Redraw();
  void MeasureImage();
  void Compare(bool comparing);
  void ShowProgress();
  void ShowView();
  void ShowPixel(std::optional<Point> pixel);
  void SetUp();  // after the resolution or the colors have changed
  void Arrange();
  MenuState State() const;

  Document document_;
  RecentFiles recent_;
  std::map<const omb::Step*, omb::Arguments> last_arguments_;
  std::vector<OpenWindow> windows_;  // as the menu lists them
  std::optional<omb::Call> preview_;
  bool comparing_ = false;

  std::optional<Toolbar> toolbar_;
  std::optional<ImageView> view_;
  std::optional<HistogramPane> histogram_;
  std::optional<StatusLine> status_;
  bool show_toolbar_ = true, show_histogram_ = true;

  std::shared_ptr<Progress> work_;  // what is being done
  std::string deed_;
  bool writing_ = false;  // a file: it must not be cut off
  bool closing_ = false;  // as soon as the work has stopped
  std::chrono::steady_clock::time_point begun_;
  // The last members: they end before what their work uses.
  std::optional<Worker> hands_, eyes_;
};

}  // namespace ombview
