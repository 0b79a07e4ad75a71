#include "oxDAERender/oxRenderPicture.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>

#include <stb_image.h>
#include <zlib.h>

namespace {

// Deflates a PNG's rows for stb_image_write with zlib at its fastest level:
// stb's own compressor takes some four times as long (25 ms of a 512 x 512
// picture) and writes larger files. The block is malloc'ed, as stb frees it.
unsigned char* DeflateRows(unsigned char* data, int length, int* deflatedLength, int) {
  uLongf bound = compressBound(static_cast<uLong>(length));
  auto* deflated = static_cast<unsigned char*>(std::malloc(bound));
  if (deflated &&
      compress2(deflated, &bound, data, static_cast<uLong>(length), Z_BEST_SPEED) == Z_OK) {
    *deflatedLength = static_cast<int>(bound);
    return deflated;
  }
  std::free(deflated);
  return nullptr;
}

}  // namespace

// The PNG writer is compiled here, its functions static, so that it can use
// zlib; the decoder is libstb's.
#define STBIW_ZLIB_COMPRESS DeflateRows
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#include <stb_image_write.h>
#pragma GCC diagnostic pop

namespace {

// Rows are written unfiltered. The pictures drawn here are flat colours and
// smooth shading, which deflate packs without a filter: choosing a filter
// per row took half of the writing and gave files a fifth larger.
[[maybe_unused]] const bool kRowsUnfiltered = (stbi_write_force_png_filter = 0, true);

}  // namespace

// stb_easy_font is a header of static functions, not all of which are used.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wsign-compare"
#include <stb_easy_font.h>
#pragma GCC diagnostic pop

namespace OxDAERender {

namespace {

constexpr std::array<uint8_t, 4> kLabelColor = {230, 230, 230, 255};
constexpr int kLabelHeight = 14;  // pixels below a thumbnail for its label
constexpr int kCellGap = 6;       // pixels between cells and around the sheet

void AppendBytes(void* context, void* data, int size) {
  auto* out = static_cast<std::string*>(context);
  out->append(static_cast<const char*>(data), static_cast<size_t>(size));
}

// Fills the rectangle [x0, x1) x [y0, y1), clipped to the picture.
void FillRect(oxPicture& picture, int x0, int y0, int x1, int y1, std::array<uint8_t, 4> color) {
  x0 = std::max(x0, 0);
  y0 = std::max(y0, 0);
  x1 = std::min(x1, picture.width);
  y1 = std::min(y1, picture.height);
  for (int y = y0; y < y1; ++y) {
    for (int x = x0; x < x1; ++x)
      picture.SetPixel(x, y, color);
  }
}

// Copies `source` into `target` with its top left corner at (x, y).
void Blit(oxPicture& target, const oxPicture& source, int x, int y) {
  for (int row = 0; row < source.height; ++row) {
    for (int column = 0; column < source.width; ++column)
      target.SetPixel(x + column, y + row, source.Pixel(column, row));
  }
}

// `text` cut to at most `width` pixels, ending in "..." when cut.
std::string FitText(const std::string& text, int width) {
  if (TextWidth(text) <= width) return text;
  std::string cut = text;
  while (!cut.empty() && TextWidth(cut + "...") > width)
    cut.pop_back();
  return cut + "...";
}

// `text` with every byte stb_easy_font has no glyph for (outside printable
// ASCII, so also the bytes of UTF-8 sequences) replaced by '?'.
std::string Printable(std::string_view text) {
  std::string printable(text);
  for (char& c : printable) {
    if (c < 32 || c > 126) c = '?';
  }
  return printable;
}

}  // namespace

oxPicture::oxPicture(int width, int height, std::array<uint8_t, 4> fill)
    : width(width), height(height), rgba(static_cast<size_t>(width) * height * 4) {
  for (size_t i = 0; i < rgba.size(); i += 4)
    std::copy(fill.begin(), fill.end(), rgba.begin() + static_cast<ptrdiff_t>(i));
}

std::array<uint8_t, 4> oxPicture::Pixel(int x, int y) const {
  const size_t at = (static_cast<size_t>(y) * width + x) * 4;
  return {rgba[at], rgba[at + 1], rgba[at + 2], rgba[at + 3]};
}

void oxPicture::SetPixel(int x, int y, std::array<uint8_t, 4> value) {
  if (x < 0 || y < 0 || x >= width || y >= height) return;
  const size_t at = (static_cast<size_t>(y) * width + x) * 4;
  std::copy(value.begin(), value.end(), rgba.begin() + static_cast<ptrdiff_t>(at));
}

bool WritePng(const oxPicture& picture, const std::string& path) {
  std::string png;
  if (!stbi_write_png_to_func(AppendBytes, &png, picture.width, picture.height, 4,
                              picture.rgba.data(), picture.width * 4))
    return false;
  std::ofstream file(path, std::ios::binary);
  file.write(png.data(), static_cast<std::streamsize>(png.size()));
  return static_cast<bool>(file.flush());
}

oxPicture DecodePicture(std::string_view bytes) {
  int width = 0;
  int height = 0;
  int channels = 0;
  stbi_uc* pixels =
      bytes.size() > static_cast<size_t>(INT32_MAX)
          ? nullptr
          : stbi_load_from_memory(reinterpret_cast<const stbi_uc*>(bytes.data()),
                                  static_cast<int>(bytes.size()), &width, &height, &channels, 4);
  if (!pixels) return {};
  oxPicture picture;
  picture.width = width;
  picture.height = height;
  picture.rgba.assign(pixels, pixels + static_cast<size_t>(width) * height * 4);
  stbi_image_free(pixels);
  return picture;
}

void DrawText(oxPicture& picture, int x, int y, std::string_view text, std::array<uint8_t, 4> color,
              int scale) {
  // stb_easy_font writes 4 vertices of 16 bytes per quad, and a glyph takes
  // at most a dozen quads.
  std::vector<char> quads(64 * 12 * (text.size() + 1));
  std::string copy = Printable(text);
  const int count =
      stb_easy_font_print(0, 0, copy.data(), nullptr, quads.data(), static_cast<int>(quads.size()));
  for (int q = 0; q < count; ++q) {
    float corners[4][4];
    std::copy_n(quads.data() + q * 64, 64, reinterpret_cast<char*>(corners));
    const int x0 = static_cast<int>(std::lround(corners[0][0]));
    const int y0 = static_cast<int>(std::lround(corners[0][1]));
    const int x1 = static_cast<int>(std::lround(corners[2][0]));
    const int y1 = static_cast<int>(std::lround(corners[2][1]));
    FillRect(picture, x + x0 * scale, y + y0 * scale, x + x1 * scale, y + y1 * scale, color);
  }
}

int TextWidth(std::string_view text) {
  std::string copy = Printable(text);
  return stb_easy_font_width(copy.data());
}

oxPicture ComposeSheet(const std::vector<oxSheetCell>& cells) {
  if (cells.empty()) return oxPicture(1, 1, kBackground);
  int cellWidth = 1;
  int cellHeight = 1;
  for (const oxSheetCell& cell : cells) {
    cellWidth = std::max(cellWidth, cell.picture.width);
    cellHeight = std::max(cellHeight, cell.picture.height);
  }
  const int count = static_cast<int>(cells.size());
  const int columns = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(count))));
  const int rows = (count + columns - 1) / columns;
  const int pitchX = cellWidth + kCellGap;
  const int pitchY = cellHeight + kLabelHeight + kCellGap;
  oxPicture sheet(kCellGap + columns * pitchX, kCellGap + rows * pitchY, kBackground);
  for (int i = 0; i < count; ++i) {
    const int x = kCellGap + (i % columns) * pitchX;
    const int y = kCellGap + (i / columns) * pitchY;
    Blit(sheet, cells[i].picture, x, y);
    const std::string label = FitText(cells[i].label, cellWidth);
    DrawText(sheet, x + (cellWidth - TextWidth(label)) / 2, y + cellHeight + 3, label, kLabelColor);
  }
  return sheet;
}

}  // namespace OxDAERender
