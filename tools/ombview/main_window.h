// The viewer's window: menus above, the image with its histogram, a line of remarks below.
#pragma once

#include <functional>
#include <map>
#include <optional>

#include "capture.h"
#include "document.h"
#include "histogram_pane.h"
#include "image_view.h"
#include "window.h"

namespace ombview {

class MainWindow : public Window {
 public:
  MainWindow();

  void Open(const std::filesystem::path& file);

 private:
  LRESULT OnMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  void OnCommand(WORD command);
  void OnDrop(WPARAM dropped);
  void OnMenu(HMENU menu);

  // Runs what may fail, shows the image that it leaves and tells how it went: by a dialog when it
  // did not work, by remarks and the time it took when it did.
  void Do(const std::string& deed, const std::function<void()>& action);
  void OpenByDialog();
  void SaveByDialog();
  void Run(const omb::Step& step);
  void CaptureWindow(size_t index);
  bool MayClose() const;

  void ShowDocument();
  void ShowStatus(const std::wstring& remark);
  void Arrange();

  Document document_;
  omb::Remark remark_ = [this](const std::string& text) { remarks_ += " · " + text; };
  std::string remarks_;
  std::map<const omb::Step*, omb::Arguments> last_arguments_;
  std::vector<OpenWindow> windows_;  // as the menu lists them

  std::optional<ImageView> view_;
  std::optional<HistogramPane> histogram_;
  HWND status_ = nullptr;
  bool show_histogram_ = true;
};

}  // namespace ombview
