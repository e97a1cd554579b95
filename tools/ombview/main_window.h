// The viewer's window: menus and toolbar above, the image with its histogram, a line of remarks
// below. It only asks and shows; whatever takes time is a job, or a matter of what is to be seen.
#pragma once

#include <functional>
#include <map>
#include <optional>

#include "capture.h"
#include "document.h"
#include "document_files.h"
#include "histogram_pane.h"
#include "image_view.h"
#include "jobs.h"
#include "menus.h"
#include "sight.h"
#include "status_line.h"
#include "toolbar.h"
#include "window.h"

namespace ombview {

class MainWindow : public Window {
 public:
  MainWindow();

  // Asks for unsaved work first.
  void Open(const std::filesystem::path& file);
  // Keys that are held down rather than pressed. True when the message is dealt with.
  bool TakesKey(const MSG& message);

 private:
  void Paint(Painting& painting) override;
  LRESULT OnMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  void OnCommand(WORD command);
  void OnDrop(WPARAM dropped);
  void OnMenu(HMENU menu);

  void OnJob();  // begins, or is over
  void Stop();
  void WaitForJob();
  void Tell(const std::wstring& message) const;

  void Close();
  void Copy();
  void Paste();
  void CropToSelection();
  void Run(const omb::Step& step);
  void Apply(const omb::Call& call);
  void CaptureWindow(size_t index);

  // What is to be seen, anew.
  void ShowDocument();
  void Redraw();
  void MeasureImage();
  void Compare(bool comparing);
  void ShowView();
  void ShowPixel(std::optional<Point> pixel);
  void SetUp();  // after the resolution or the colors have changed
  void Arrange();
  MenuState State() const;

  Document document_;
  std::map<const omb::Step*, omb::Arguments> last_arguments_;
  std::vector<OpenWindow> windows_;  // as the menu lists them
  std::optional<omb::Call> preview_;
  bool comparing_ = false;

  std::optional<Toolbar> toolbar_;
  std::optional<ImageView> view_;
  std::optional<HistogramPane> histogram_;
  std::optional<StatusLine> status_;
  bool show_toolbar_ = true, show_histogram_ = true;

  bool closing_ = false;  // as soon as the job is over
  // The last members: they end before what their work uses.
  std::optional<Sight> sight_;
  std::optional<Jobs> jobs_;
  std::optional<DocumentFiles> files_;
};

}  // namespace ombview
