// The gallery as a page: what it shows, and its writing as HTML.
#pragma once

#include <string>
#include <vector>

namespace omb {

// A picture in the page.
struct Shown {
  std::string data_uri;
  int width = 0, height = 0;
};

// One step on one input.
struct Exhibit {
  std::string step, title, family, summary;
  std::string command;  // repeats it
  std::string time;     // "1.8 ms"
  std::string remark;   // "nothing changes in this image"
  std::string refusal;  // why there is no picture; empty when there is one
  enum class Frame {
    kWhole,    // lies under the input, which a slider uncovers
    kDetail,   // the same with the room's detail of it
    kResized,  // has the input in its corner
  };
  Frame frame = Frame::kWhole;
  Shown after;
};

struct Room {
  std::string name, facts;  // "photo.jpg", "1920 x 1080 pixels, 24 bits"
  Shown before;
  Shown detail;                   // a piece of the input, pixel by pixel
  std::vector<Exhibit> exhibits;  // those of a family in a row
};

std::string PageOf(const std::vector<Room>& rooms);

// The page's unchanging parts: gallery_template.cpp.
extern const char kPageHead[];  // up to <body>; the style
extern const char kPageTail[];  // the script and the end

}  // namespace omb
