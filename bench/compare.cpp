#include "compare.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "core/packed_dib.h"
#include "core/pixels.h"
#include "run.h"

namespace ombrilo::bench {

namespace {

Values ValuesOf(const PackedDib* image) {
  const DibView dib = *DibView::Open(image);
  Values values = {dib.width(), dib.height(), dib.indexed() ? 1 : 3, {}};
  const size_t line = static_cast<size_t>(values.width) * values.channels;
  values.bytes.resize(line * values.height);
  for (int y = 0; y < values.height; ++y) {
    uint8_t* to = &values.bytes[line * y];
    if (dib.indexed()) {
      UnpackIndices(dib.row(y), dib.bit_count(), line, to);
    } else {
      std::copy_n(dib.row(y), line, to);
    }
  }
  return values;
}

void Check(const std::string& row, const Values& ours, const Values& peer, Agreement agreement) {
  if (ours.width != peer.width || ours.height != peer.height || ours.channels != peer.channels) {
    std::fprintf(stderr, "%s: results differ in size\n", row.c_str());
    std::exit(1);
  }
  const int border = agreement.border;
  for (int y = border; y < ours.height - border; ++y) {
    for (int i = border * ours.channels; i < (ours.width - border) * ours.channels; ++i) {
      const size_t at = static_cast<size_t>(y) * ours.width * ours.channels + i;
      if (std::abs(ours.bytes[at] - peer.bytes[at]) <= agreement.tolerance) continue;
      std::fprintf(stderr, "%s: value %d of row %d is %d, and %d in %s\n", row.c_str(), i, y,
                   ours.bytes[at], peer.bytes[at], "the peer");
      std::exit(1);
    }
  }
}

double RowBytes(const PackedDib* image) {
  return static_cast<double>(omb_BytesPerLine(image)) * omb_DIBHeight(image);
}

std::function<void()> Checker(const std::string& row, const PackedDib* image,
                              std::function<void(PackedDib**)> ours, const Peer& peer,
                              std::optional<Agreement> agreement) {
  if (!agreement || !peer.result) return nullptr;
  return [=] {
    PackedDib* result = Copy(image).release();
    ours(&result);
    peer.call();
    Check(row, ValuesOf(result), peer.result(), *agreement);
    omb_freedib(result);
  };
}

}  // namespace

void InPlace(const std::string& row, const PackedDib* image, std::function<void(PackedDib*)> ours,
             Peer peer, std::optional<Agreement> agreement) {
  auto mine = std::make_shared<Image>();
  Row added = {row, Pixels(image), 2 * RowBytes(image), std::move(peer)};
  const auto once = [=](PackedDib** copy) { ours(*copy); };
  added.check = Checker(row, image, once, added.peer, agreement);
  added.start = [=](Row&) { *mine = Copy(image); };
  added.ours = [=] { ours(mine->get()); };
  Add(std::move(added));
}

void Reading(const std::string& row, const PackedDib* image, std::function<void(PackedDib*)> ours,
             Peer peer) {
  Row added = {row, Pixels(image), RowBytes(image), std::move(peer)};
  added.ours = [=] { ours(const_cast<PackedDib*>(image)); };
  Add(std::move(added));
}

void Replacing(const std::string& row, const PackedDib* image,
               std::function<void(PackedDib**)> ours, Peer peer,
               std::optional<Agreement> agreement) {
  auto mine = std::make_shared<Image>();
  Row added = {row, 0, 0, std::move(peer)};
  added.start = [=](Row& started) {
    PackedDib* result = Copy(image).release();
    ours(&result);
    started.pixels = Pixels(result);
    started.bytes = RowBytes(image) + RowBytes(result);
    omb_freedib(result);
  };
  added.check = Checker(row, image, ours, added.peer, agreement);
  added.prepare = [=] { *mine = Copy(image); };
  added.ours = [=] {
    PackedDib* replaced = mine->release();
    ours(&replaced);
    omb_freedib(replaced);
  };
  Add(std::move(added));
}

void OnFreshCopies(const std::string& row, const PackedDib* image,
                   std::function<void(PackedDib*)> ours, Peer peer) {
  auto mine = std::make_shared<Image>();
  Row added = {row, Pixels(image), 2 * RowBytes(image), std::move(peer)};
  added.prepare = [=] { *mine = Copy(image); };
  added.ours = [=] { ours(mine->get()); };
  Add(std::move(added));
}

void Compare(const std::string& row, double pixels, std::function<void()> ours,
             const std::string& peer_name, std::function<void()> peer) {
  ComparePrepared(row, pixels, nullptr, std::move(ours), peer_name, std::move(peer));
}

void ComparePrepared(const std::string& row, double pixels, std::function<void()> prepare,
                     std::function<void()> ours, const std::string& peer_name,
                     std::function<void()> peer) {
  Row added = {row, pixels, 0, {peer_name, std::move(peer), nullptr}};
  added.prepare = std::move(prepare);
  added.ours = std::move(ours);
  Add(std::move(added));
}

#ifdef OMBRILO_HAVE_OPENCV

namespace {

Values ValuesOf(const cv::Mat& mat) {
  const cv::Mat whole = mat.clone();
  return {mat.cols, mat.rows, mat.channels(),
          std::vector<uint8_t>(whole.data, whole.data + whole.total() * whole.elemSize())};
}

}  // namespace

Peer InMat(const std::string& name, const PackedDib* image, std::function<void(cv::Mat&)> call) {
  auto mat = std::make_shared<cv::Mat>();
  const auto changed = [=]() -> cv::Mat& {
    if (mat->empty()) *mat = AsMat(const_cast<PackedDib*>(image)).clone();
    return *mat;
  };
  return {"OpenCV " + name, [=] { call(changed()); }, [=] { return ValuesOf(*mat); }};
}

Peer OntoMat(const std::string& name, const PackedDib* image,
             std::function<void(const cv::Mat&, cv::Mat&)> call) {
  const cv::Mat from = AsMat(const_cast<PackedDib*>(image));
  auto to = std::make_shared<cv::Mat>();
  return {"OpenCV " + name, [=] { call(from, *to); }, [=] { return ValuesOf(*to); }};
}

#endif

#ifdef OMBRILO_HAVE_LEPTONICA

namespace {

Values ValuesOf(PIX* pix) {
  Values values = {pixGetWidth(pix), pixGetHeight(pix), 1, {}};
  for (int y = 0; y < values.height; ++y) {
    l_uint32* row = pixGetData(pix) + static_cast<ptrdiff_t>(y) * pixGetWpl(pix);
    for (int x = 0; x < values.width; ++x) {
      values.bytes.push_back(static_cast<uint8_t>(pixGetDepth(pix) == 1 ? GET_DATA_BIT(row, x)
                                                                        : GET_DATA_BYTE(row, x)));
    }
  }
  return values;
}

}  // namespace

Peer OnPix(const std::string& name, const PackedDib* image, std::function<PIX*(PIX*)> call) {
  auto from = std::make_shared<std::shared_ptr<PIX>>();
  auto to = std::make_shared<std::shared_ptr<PIX>>();
  const auto run = [=] {
    if (!*from) *from = AsPix(image);
    *to = nullptr;
    PIX* result = call(from->get());
    *to = result == from->get()
              ? *from
              : std::shared_ptr<PIX>(result, [](PIX* made) { pixDestroy(&made); });
  };
  return {"Leptonica " + name, run, [=] { return ValuesOf(to->get()); }};
}

Peer OnIndexedPix(const std::string& name, const PackedDib* image, std::function<PIX*(PIX*)> call) {
  return OnPix(name + ", pixOctcubeQuantFromCmap", image, [=](PIX* indexed) {
    if (pixGetColormap(indexed) == nullptr) {
      PIXCMAP* colors = pixcmapCreate(8);
      const DibView dib = *DibView::Open(image);
      for (uint32_t i = 0; i < 256; ++i) {
        const uint32_t color = dib.ReadU32(kInfoHeaderSize + size_t{4} * i);
        pixcmapAddColor(colors, color >> 16 & 255, color >> 8 & 255, color & 255);
      }
      pixSetColormap(indexed, colors);
    }
    PIX* colors = pixRemoveColormap(indexed, REMOVE_CMAP_TO_FULL_COLOR);
    PIX* changed = call(colors);
    PIX* mapped =
        pixOctcubeQuantFromCmap(changed, pixGetColormap(indexed), 8, 4, L_EUCLIDEAN_DISTANCE);
    if (changed != colors) pixDestroy(&changed);
    pixDestroy(&colors);
    return mapped;
  });
}

#endif

}  // namespace ombrilo::bench
