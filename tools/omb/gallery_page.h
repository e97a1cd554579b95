// The gallery as an HTML page, and what it shows.
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
    kWhole,    // lies under the input; a slider uncovers it
    kDetail,   // the same, at the place of the room's detail
    kResized,  // has the input in its corner
  };
  Frame frame = Frame::kWhole;
  Shown after;
};

struct Room {
  std::string name, facts;  // "photo.jpg", "1920 x 1080 pixels, 24 bits"
  Shown before;
  Shown detail;                   // a piece of the input, pixel by pixel
  std::vector<Exhibit> exhibits;  // grouped by family
};

std::string PageOf(const std::vector<Room>& rooms);

// The fixed parts of the page: gallery_template.cpp.
extern const char kPageHead[];  // up to <body>; the style
extern const char kPageTail[];  // the script and the end

}  // namespace omb
