/**
 * @file ombrilo.h
 * @brief Ombrilo: image processing on packed device-independent bitmaps.
 *
 * Plain C functions on images in memory. The library reads no files, keeps no settings, starts no
 * threads and holds no state between calls: every call may run on any thread as long as no two calls
 * share an image.
 *
 * @section image The image
 *
 * A ::PackedDib is one heap block: header, color table and pixel rows, back to back.
 *
 * - Header: a 32-bit size field equal to 40 makes it a BITMAPINFOHEADER ("information header"); any
 *   other value makes it a BITMAPCOREHEADER ("core header"), whose color table and rows follow at
 *   that many bytes.
 * - Color table: entries of blue, green, red and a reserved byte after an information header, of
 *   blue, green, red after a core header. The information header's biClrUsed, when it is not 0, is
 *   the number of entries at any depth; otherwise 1, 4 and 8 bits have 2, 16 and 256 entries and
 *   other depths none. Loops over the table use the low 16 bits of the number.
 * - Rows: the bottom row first, each padded to a multiple of 4 bytes. 24-bit pixels are blue, green,
 *   red; 1- and 4-bit pixels fill a byte from its high bits. A height below 1 means no rows. The
 *   compression and image size fields are not consulted unless a function says so.
 *
 * The block's extent is header size + color table size + height x row length. A function never reads
 * or writes outside it: what a pixel or a header refers to beyond counts as 0, and nothing is
 * written there. An image whose extent does not fit a signed 32-bit byte count is refused.
 *
 * @section results Results
 *
 * Status results are 1 for done and 0 for refused or failed. A call that refuses leaves the image
 * unchanged. Running out of memory is such a refusal.
 *
 * @section ownership Ownership
 *
 * Images are allocated with malloc() and released with free() of one C runtime, or with omb_newdib()
 * and omb_freedib() where the host has no such functions at hand. Functions that take a
 * `PackedDib*` work in place. Functions that take a `PackedDib**` build a new block, free the old one
 * and store the new address. Functions that return an image hand it to the caller.
 */
#ifndef OMBRILO_OMBRILO_H_
#define OMBRILO_OMBRILO_H_

#include <stdint.h>

/** Version of this header; the library's major version is part of its file name. */
#define OMB_VERSION_MAJOR 0
#define OMB_VERSION_MINOR 1
#define OMB_VERSION_PATCH 0

#if defined(_WIN32)
#define OMB_API
#else
#define OMB_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** An image: the first byte of a packed device-independent bitmap. */
typedef struct PackedDib PackedDib;

/** A rectangle with the layout of the Windows RECT; rows count from the top of the picture. */
typedef struct {
  int32_t left;   /**< first column */
  int32_t top;    /**< first row */
  int32_t right;  /**< last column where a function says "inclusive" */
  int32_t bottom; /**< last row where a function says "inclusive" */
} OmbRect;

/** @defgroup memory Creating and releasing images
 * For hosts whose language has no malloc() of the library's C runtime. @{ */

/**
 * Creates an image with an information header, 1 plane and all pixels 0.
 *
 * Images of 1, 4 and 8 bits get a full color table that holds a gray ramp from black to white.
 *
 * @param width    pixels per row, 1 or more
 * @param height   rows, 1 or more
 * @param bitCount bits per pixel: 1, 4, 8, 16, 24 or 32
 * @return the image, released with omb_freedib() or free(); null for other values, for blocks of
 *         2 GiB and more, and when memory runs out
 */
OMB_API PackedDib* omb_newdib(int32_t width, int32_t height, uint16_t bitCount);

/** Releases an image with the C runtime's free(). Null is accepted. */
OMB_API void omb_freedib(PackedDib* dib);

/** @} */

/** @defgroup queries Header queries
 * Each reads the header of an image of any depth and checks nothing but the pointer: null gives 0.
 * @{ */

/** Width in pixels as stored: a negative biWidth appears as a number above 2^31. */
OMB_API uint32_t omb_DIBWidth(const PackedDib* dib);

/** Height in rows as stored: a negative biHeight appears as a number above 2^31. */
OMB_API uint32_t omb_DIBHeight(const PackedDib* dib);

/** Bits per pixel as stored. */
OMB_API uint16_t omb_DIBBitCount(const PackedDib* dib);

/**
 * Number of color table entries: biClrUsed with all 32 bits when an information header has one,
 * otherwise 2, 16, 256 for 1, 4 and 8 bits and 0 for other depths.
 */
OMB_API uint32_t omb_DIBNumColors(const PackedDib* dib);

/**
 * Size of the color table in bytes: 4 (information header) or 3 (core header) times the number of
 * entries, in 16-bit arithmetic. For a biClrUsed of 16384 and more it therefore disagrees with
 * omb_DIBNumColors().
 */
OMB_API uint16_t omb_PaletteSize(const PackedDib* dib);

/** First byte of the pixel rows: the image's address + size field + omb_PaletteSize(). */
OMB_API uint8_t* omb_FindDIBBits(const PackedDib* dib);

/**
 * Bytes per row of an image with an information header:
 * ((planes x bits per pixel x width + 31) / 32) x 4 in signed 32-bit arithmetic. Unlike the row length
 * that operations use, it includes the planes field. The fields are read at their information header
 * positions whatever the size field says, so the number means nothing for a core header.
 */
OMB_API int32_t omb_BytesPerLine(const PackedDib* dib);

/** @} */

/** @defgroup image Whole images
 * @{ */

/**
 * Photographic negative, in place: every blue, green and red becomes 255 minus itself.
 *
 * 1, 4 and 8 bits: the color table entries change and the pixels do not; reserved bytes stay.
 * 24 bits: the pixels change; row padding stays.
 *
 * @return 1; 0 for null and for other depths
 */
OMB_API uint32_t omb_invert(PackedDib* dib);

/**
 * Creates a logical palette from the color table, entry by entry, with all flags 0. As many entries
 * as omb_DIBNumColors() says, in its low 16 bits; any depth.
 *
 * @return On Windows an HPALETTE, which the caller deletes with DeleteObject(). Elsewhere the address
 *         of a LOGPALETTE structure (16-bit version 0x300, 16-bit number of entries, then red, green,
 *         blue and flags per entry), which the caller releases with free(). 0 for null, for an image
 *         without colors and when the palette cannot be created.
 */
OMB_API uintptr_t omb_CreateDIBPalette(const PackedDib* dib);

/**
 * Brings a 16- or 32-bit image to 24 bits, so that every other function takes it.
 *
 * Channels are red 0x7C00, green 0x03E0, blue 0x001F (16 bits) or red 0xFF0000, green 0xFF00, blue
 * 0xFF (32 bits). When biCompression is 3 (BI_BITFIELDS), the three 32-bit masks behind the 40-byte
 * header replace them, in the order red, green, blue; they do not move the pixel rows, which start
 * where omb_FindDIBBits() says. A channel becomes (pixel AND mask), shifted down to bit 0, cut to 8
 * bits and shifted up by 8 - (bits in the mask) modulo 32: missing low bits are 0, so that a 5-bit 31
 * becomes 248, and a mask of more than 8 bits gives 0.
 *
 * The new header is the old one's first 40 bytes with biBitCount 24, biCompression 0 and biSizeImage
 * 0. A biClrUsed stays, with a zeroed color table of that size. These fields are written at their
 * information header positions, so that after a core header the bit count field keeps its value.
 *
 * @param image the image, replaced
 * @return 1; also 1, with the image unchanged, at 1, 4, 8 and 24 bits. 0 for null, for other depths
 *         and when memory runs out
 */
OMB_API uint32_t omb_transformat(PackedDib** image);

/**
 * Cuts the image down to a rectangle; pixels and color table are copied exactly. biSizeImage keeps
 * its value.
 *
 * @param image     the image, replaced; 1, 4, 8 or 24 bits
 * @param rectangle the part to keep, all four edges inclusive, inside the image
 * @return 1; 0 for null, other depths, a rectangle that is empty or leaves the image, and when memory
 *         runs out
 */
OMB_API uint32_t omb_crop(PackedDib** image, const OmbRect* rectangle);

/**
 * Copies a rectangle to a new image; pixels and color table are copied exactly, and the copy of an
 * information header gets a biSizeImage of 0.
 *
 * @param dib the image; 1, 4, 8 or 24 bits
 * @param x   left column
 * @param y   top row, counted from the top of the picture
 * @param w   width in pixels; 0 is allowed
 * @param h   height in rows; 0 gives header and color table alone, at any depth
 * @return the address of the new image, which the caller releases; 0 for null, other depths, a
 *         rectangle that leaves the image, and when memory runs out
 */
OMB_API uintptr_t omb_cpydibrect(const PackedDib* dib, int32_t x, uint32_t y, uint32_t w,
                                 uint32_t h);

/** @} */

/** @defgroup geometry Scale, rotate, flip
 * Results are the same to the bit on every processor: positions, weights and sums are single
 * precision, in the order written here.
 *
 * Scaling and rotation resample: a pixel of the new image has a position (sx, sy) in the source, in
 * columns from the left and rows from the bottom. With ix, iy their truncations, dx = sx - ix and
 * dy = sy - iy, the mode selects
 *
 * - 1, point: source pixel (ix, iy), its index or color as it is.
 * - 2, bilinear: (1-dy)(1-dx) of (ix, iy) + (1-dy)dx of (ix+1, iy) + (1-dx)dy of (ix, iy+1) + dx dy of
 *   (ix+1, iy+1), per channel. An ix above W-2 becomes W-2 and an iy above H-2 becomes H-2, with dx and
 *   dy as they are.
 * - 3, bicubic: 4 x 4 pixels at the offsets -1, 0, 1, 2. Each row's pixels are summed with the weights
 *   C(1+dx), C(dx), C(1-dx), C(2-dx), then the four sums with the same weights of dy; C(t) with a = |t|
 *   is 1 - 2a^2 + a^3 below 1, 4 - 8a + 5a^2 - a^3 below 2 and 0 beyond. Offsets derive from the
 *   coordinate x or y in the new image and the source's last column or row L: -1 is 0 where x is 0; 1 is
 *   0 where x + 1 > L; 2 is the offset before it where x + 2 > L, except for columns at 24 bits, whose
 *   last two offsets are 0 and 1 there. Samples are taken row by row; one that leaves the source first
 *   moves ix or iy, for itself and all samples after it: iy to H-1-offset or -offset, ix to W-1-ix or
 *   -offset.
 *
 * What still lies outside the source is clamped into it. Channel sums are limited to 0..255 and
 * truncated. At 1, 4 and 8 bits modes 2 and 3 blend color table colors and store the nearest entry's
 * index: least squared distance over red, green and blue, the lowest index on a tie, among the 2, 16 or
 * 256 entries of the depth. @{ */

/**
 * Scales the image. The position of pixel (x, y) is x * (W / width), y * (H / height): there is no
 * half-pixel offset.
 *
 * The color table and biSizeImage stay. After a core header the width is stored in 32 bits over both
 * size fields, so that the header's height becomes 0 for widths up to 65535; the rows are complete. An
 * image of another depth, without pixels, or scaled in another mode becomes one of the new size with
 * all pixels 0.
 *
 * @param image  the image, replaced; 1, 4, 8 or 24 bits
 * @param width  new width in pixels; 0 gives an image without pixels
 * @param height new height in rows; likewise
 * @param mode   1 point, 2 bilinear, 3 bicubic
 * @return 1; 0 for null, for the size that the image has, for a size of 2 GiB and more and when memory
 *         runs out
 */
OMB_API uint32_t omb_scale(PackedDib** image, uint32_t width, uint32_t height, uint32_t mode);

/**
 * Turns the image about its center; positive angles turn clockwise.
 *
 * The angle is reduced by full turns and keeps its sign. 90, 180 and 270 degrees, within 0.01, move
 * pixels exactly; the mode does not matter. Every other angle r, negative right angles included,
 * resamples: with c and s the cosine and sine of r / 180 * 3.1415926, the new width is
 * max(|Wc - Hs|, |Wc + Hs|) + 0.5 and the new height max(|Hc - Ws|, |Hc + Ws|) + 0.5, truncated. The
 * position of pixel (x, y), y from the bottom, is uc + vs + W/2, us - vc + H/2 with
 * u = x - width/2 and v = height/2 - y, where halves are whole numbers. Pixels whose truncated position
 * is outside the source are background: all bits 1, which is white at 24 bits and the highest index
 * otherwise; so is row padding.
 *
 * The color table and biSizeImage stay. When resampling, an image of another depth, without pixels or
 * in another mode becomes background throughout.
 *
 * @param image   the image, replaced; 1, 4, 8 or 24 bits
 * @param degrees the angle
 * @param mode    1 point, 2 bilinear, 3 bicubic
 * @return 1; 0 for null, for an angle within 0.01 of a multiple of 360, one that is not finite or
 *         outside 32-bit integers, for other depths or an image without rows at a right angle, for a
 *         size of 2 GiB and more and when memory runs out
 */
OMB_API uint32_t omb_rotate(PackedDib** image, float degrees, uint32_t mode);

/**
 * Mirrors the image left to right, in place. Row padding stays.
 *
 * @return 1; 0 for null and for depths other than 1, 4, 8 and 24
 */
OMB_API uint32_t omb_fliphor(PackedDib* dib);

/**
 * Mirrors the image top to bottom, in place, at any depth. Row padding moves with its row.
 *
 * @return 1; 0 for null
 */
OMB_API uint32_t omb_flipvert(PackedDib* dib);

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* OMBRILO_OMBRILO_H_ */
