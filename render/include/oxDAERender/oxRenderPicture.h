// Pictures the renderer makes: RGBA pixels, PNG files, text drawn into
// them, and the contact sheet of many thumbnails.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <oxKernel/oxContainers.h>

namespace OxDAERender {

// 8-bit RGBA pixels, the top row first, as PNG files hold them, in the
// host's large-page arrays (a picture's megabytes are written at once).
// Empty (0 x 0) by default.
struct oxPicture {
  int width = 0;
  int height = 0;
  OxKernel::oxArray<uint8_t> rgba;

  oxPicture() = default;
  // A `width` x `height` picture filled with `fill`.
  oxPicture(int width, int height, std::array<uint8_t, 4> fill);

  std::array<uint8_t, 4> Pixel(int x, int y) const;
  void SetPixel(int x, int y, std::array<uint8_t, 4> value);
};

// The background colour of rendered pictures: a dark blue-grey that no lit
// material colour is likely to equal, opaque.
inline constexpr std::array<uint8_t, 4> kBackground = {48, 52, 60, 255};

// Writes `picture` as a PNG file (stb_image_write, deflated by zlib at its
// fastest level); false when the file cannot be written.
bool WritePng(const oxPicture& picture, const std::string& path);

// Decodes the PNG (or any picture stb_image reads) in `bytes`; an empty
// picture when it cannot.
oxPicture DecodePicture(std::string_view bytes);

// Draws `text` into `picture` with stb_easy_font's built-in glyphs (about 6
// pixels wide and 7 high each at `scale` 1, printable ASCII), the top left
// corner at (x, y), in `color`; what falls outside the picture is clipped.
void DrawText(oxPicture& picture, int x, int y, std::string_view text, std::array<uint8_t, 4> color,
              int scale = 1);
// The width in pixels DrawText takes for `text` at scale 1.
int TextWidth(std::string_view text);

// One thumbnail of a contact sheet and the label written under it.
struct oxSheetCell {
  oxPicture picture;
  std::string label;
};

// Lays `cells` out as a grid, as near square as the count allows (columns
// = ceil(sqrt(n))), each cell its thumbnail with its label centred below
// it (cut with "..." to the thumbnail's width), on the background colour.
// Thumbnails are placed at their own size in cells as large as the largest.
// An empty list gives a 1 x 1 picture of the background.
oxPicture ComposeSheet(const std::vector<oxSheetCell>& cells);

}  // namespace OxDAERender
