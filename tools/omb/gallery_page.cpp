#include "gallery_page.h"

#include <sstream>
#include <utility>

#include "text.h"

namespace omb {

namespace {

std::string Picture(const Shown& shown, const std::string& alt) {
  return "<img src=\"" + shown.data_uri + "\" width=\"" + std::to_string(shown.width) +
         "\" height=\"" + std::to_string(shown.height) + "\" alt=\"" + Escaped(alt) + "\">";
}

// A command whose lines may break after the parts of a path, but not inside words.
std::string Breakable(const std::string& command) {
  std::string text;
  for (const char c : command) {
    text += Escaped(std::string(1, c));
    if (c == '/' || c == ',') text += "<wbr>";
  }
  return text;
}

void WriteFrame(std::ostream& out, const Exhibit& exhibit) {
  if (!exhibit.refusal.empty()) {
    out << "<div class=\"frame refused\"><p>" << Escaped(exhibit.refusal) << "</p></div>\n";
    return;
  }
  const bool resized = exhibit.frame == Exhibit::Frame::kResized;
  const bool detail = exhibit.frame == Exhibit::Frame::kDetail;
  out << "<div class=\"frame "
      << (resized  ? "inset"
          : detail ? "split detail"
                   : "split")
      << "\">" << Picture(exhibit.after, "after " + exhibit.step) << "<div class=\"before\"></div>";
  if (!resized) {
    // The keyboard reaches it through the command below, whose arrow keys move it.
    out << "<input type=\"range\" value=\"50\" tabindex=\"-1\" aria-label=\"how much of the input "
           "to show\">";
  }
  out << "</div>\n";
}

// The picture where the style sheet finds it.
void WriteStyle(std::ostream& out, const char* selector, const std::string& id,
                const Shown& shown) {
  out << "#" << id << selector << "{--before:url(" << shown.data_uri << ");--shape:" << shown.width
      << "/" << shown.height << "}";
}

void WriteExhibit(std::ostream& out, const Exhibit& exhibit) {
  out << "<article>\n";
  WriteFrame(out, exhibit);
  out << "<h4>" << Escaped(exhibit.title);
  if (!exhibit.time.empty()) out << "<span>" << Escaped(exhibit.time) << "</span>";
  out << "</h4>\n<p>" << Escaped(exhibit.summary);
  if (!exhibit.remark.empty()) out << ". <em>" << Escaped(exhibit.remark) << "</em>";
  out << "</p>\n<pre title=\"click to copy\" tabindex=\"0\">" << Breakable(exhibit.command)
      << "</pre>\n</article>\n";
}

// The exhibits' families with an anchor for each, in order.
std::vector<std::pair<std::string, std::string>> FamiliesOf(const Room& room,
                                                            const std::string& id) {
  std::vector<std::pair<std::string, std::string>> families;
  for (const Exhibit& exhibit : room.exhibits) {
    if (families.empty() || families.back().first != exhibit.family) {
      families.emplace_back(exhibit.family, id + "-" + std::to_string(families.size()));
    }
  }
  return families;
}

void WriteRoom(std::ostream& out, const Room& room, const std::string& id) {
  // The page holds the input's pictures once, however many exhibits show them.
  out << "<style>";
  WriteStyle(out, "", id, room.before);
  WriteStyle(out, " .detail", id, room.detail);
  out << "</style>\n<section id=\"" << id << "\">\n<header>" << Picture(room.before, room.name)
      << "<div><h2>" << Escaped(room.name) << "</h2><p>" << Escaped(room.facts)
      << "</p></div></header>\n";
  const auto families = FamiliesOf(room, id);
  for (const auto& [family, anchor] : families) {
    out << "<h3 id=\"" << anchor << "\">" << Escaped(family) << "</h3>\n<div class=\"grid\">\n";
    for (const Exhibit& exhibit : room.exhibits) {
      if (exhibit.family == family) WriteExhibit(out, exhibit);
    }
    out << "</div>\n";
  }
  out << "</section>\n";
}

}  // namespace

std::string PageOf(const std::vector<Room>& rooms) {
  std::ostringstream out;
  out << kPageHead << "<nav>";
  for (size_t i = 0; rooms.size() > 1 && i < rooms.size(); ++i) {
    out << "<a href=\"#input" << i << "\">" << Escaped(rooms[i].name) << "</a>";
  }
  out << "<span>";
  // They lead to the families of the room that is shown.
  for (const auto& [family, anchor] : FamiliesOf(rooms.front(), "input0")) {
    out << "<a class=\"family\" href=\"#" << anchor << "\">" << Escaped(family) << "</a>";
  }
  out << "</span><input type=\"search\" placeholder=\"Find a step\" aria-label=\"Find a step\">"
      << "</nav>\n<main>\n";
  for (size_t i = 0; i < rooms.size(); ++i) {
    WriteRoom(out, rooms[i], "input" + std::to_string(i));
  }
  out << "</main>\n" << kPageTail;
  return out.str();
}

}  // namespace omb
