// The row of buttons below the menus. Their pictures are drawn with lines, so that they are sharp
// at every resolution.
#pragma once

#include <functional>

#include "window.h"

namespace ombview {

class Toolbar : public Window {
 public:
  struct State {
    bool possible, on;
  };

  // `state` tells how the button of a command looks now.
  Toolbar(HWND parent, std::function<State(WORD)> state);
  static int Height();

 private:
  void Paint(Painting& painting) override;
  LRESULT OnMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  RECT ButtonAt(int i) const;
  int ButtonUnder(LPARAM lparam) const;
  void SetHot(int i);
  void MakeTips();

  std::function<State(WORD)> state_;
  HWND tips_ = nullptr;
  int hot_ = -1, pressed_ = -1;
};

}  // namespace ombview
