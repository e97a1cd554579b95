/**
 * @file ombrilo.h
 * @brief Ombrilo: image processing on packed device-independent bitmaps.
 *
 * Plain C functions on images in memory. The library reads no files, keeps no settings, starts no
 * threads and holds no state between calls: every call may run on any thread as long as no two
 * calls share an image.
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
 * - Rows: the bottom row first, each padded to a multiple of 4 bytes. 24-bit pixels are blue,
 * green, red; 1- and 4-bit pixels fill a byte from its high bits. A height below 1 means no rows.
 * The compression and image size fields are not consulted unless a function says so.
 *
 * The block's extent is header size + color table size + height x row length. A function never
 * reads or writes outside it: what a pixel or a header refers to beyond counts as 0, and nothing is
 * written there. An image whose extent does not fit a signed 32-bit byte count is refused.
 *
 * @section results Results
 *
 * Status results are 1 for done and 0 for refused or failed. A call that refuses leaves the image
 * unchanged. Running out of memory is such a refusal.
 *
 * @section ownership Ownership
 *
 * Images are allocated with malloc() and released with free() of one C runtime, or with
 * omb_newdib() and omb_freedib() where the host has no such functions at hand. Functions that take
 * a `PackedDib*` work in place. Functions that take a `PackedDib**` build a new block, free the old
 * one and store the new address. Functions that return an image hand it to the caller.
 */
#ifndef OMBRILO_OMBRILO_H_
#define OMBRILO_OMBRILO_H_

#include <stdint.h>

#define OMB_VERSION_MAJOR 0 /**< major version of this header, part of the library's file name */
#define OMB_VERSION_MINOR 1 /**< minor version of this header */
#define OMB_VERSION_PATCH 0 /**< patch level of this header */

/** Marks what the library exports. */
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
 * ((planes x bits per pixel x width + 31) / 32) x 4 in signed 32-bit arithmetic. Unlike the row
 * length that operations use, it includes the planes field. The fields are read at their
 * information header positions whatever the size field says, so the number means nothing for a core
 * header.
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
 * @return On Windows an HPALETTE, which the caller deletes with DeleteObject(). Elsewhere the
 * address of a LOGPALETTE structure (16-bit version 0x300, 16-bit number of entries, then red,
 * green, blue and flags per entry), which the caller releases with free(). 0 for null, for an image
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
 * bits and shifted up by 8 - (bits in the mask) modulo 32: missing low bits are 0, so that a 5-bit
 * 31 becomes 248, and a mask of more than 8 bits gives 0.
 *
 * The new header is the old one's first 40 bytes with biBitCount 24, biCompression 0 and
 * biSizeImage 0. A biClrUsed stays, with a zeroed color table of that size. These fields are
 * written at their information header positions, so that after a core header the bit count field
 * keeps its value.
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
 * @return 1; 0 for null, other depths, a rectangle that is empty or leaves the image, and when
 * memory runs out
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

/** @defgroup tone Tone and color
 *
 * "Table" below is the color table as far as the header announces entries; reserved bytes keep
 * their values unless said otherwise. Every operation that changes 24-bit pixels leaves row padding
 * alone, and one without rows is done at once. The gray weights and roundings of these functions
 * differ from each other; each is part of its function's contract.
 * @{ */

/** The channels of a color. Functions say which of these they take. */
enum OmbChannel {
  OMB_CHANNEL_ALL = 0,   /**< red, green and blue alike */
  OMB_CHANNEL_RED = 1,   /**< red alone */
  OMB_CHANNEL_GREEN = 2, /**< green alone */
  OMB_CHANNEL_BLUE = 3,  /**< blue alone */
  OMB_CHANNEL_GRAY = 4   /**< the gray value of all three */
};

/** What omb_adjustcolor() adjusts. */
enum OmbAdjustment {
  OMB_ADJUST_OFFSETS = 1, /**< red, green and blue by amounts */
  OMB_ADJUST_GAINS = 2,   /**< red, green and blue by percent */
  OMB_ADJUST_HSI = 3,     /**< hue, saturation and intensity */
  OMB_ADJUST_HSL = 4      /**< hue, saturation and lightness */
};

/** The levels that omb_balance() changes. */
enum OmbBalanceRange {
  OMB_BALANCE_SHADOWS = 0,    /**< dark levels most */
  OMB_BALANCE_MIDTONES = 1,   /**< middle levels most */
  OMB_BALANCE_HIGHLIGHTS = 2, /**< light levels most */
  OMB_BALANCE_ALL = 3         /**< all levels alike */
};

/**
 * Whether the color table holds a color that is not gray. The pixels are not looked at: an image
 * without a table counts as colorful.
 *
 * @return 1 for a colorful image, 0 for a table that is all gray and for null
 */
OMB_API int32_t omb_iscolorful(const PackedDib* dib);

/** Whether there is any color to remove: omb_iscolorful(). */
OMB_API int32_t omb_can_gray(const PackedDib* dib);

/** Whether the sheet filter takes the depth: 1 at 8 and 24 bits, otherwise and for null 0. */
OMB_API int32_t omb_can_filtersheet(const PackedDib* dib);

/** Whether omb_pseudocolor() takes the image: 1 for a table that is all gray, otherwise and for
 * null 0. */
OMB_API int32_t omb_can_pseudocolor(const PackedDib* dib);

/** Whether color balance takes the depth: 0 at 1 and 4 bits and for null, otherwise 1. */
OMB_API int32_t omb_can_balance(const PackedDib* dib);

/** Whether automatic color is on offer: always 1. */
OMB_API int32_t omb_autoclr(void);

/**
 * Counts how often each value of one channel occurs among the pixels; 1, 4, 8 and 24 bits.
 *
 * Channel 4 is the gray value (59 green + 11 blue + 30 red) / 100, truncated, and also makes the
 * image gray: the table entries that pixels use, or the 24-bit pixels themselves.
 *
 * Width and height are cut to their low 16 bits, and the rows are taken to be as far apart as the
 * cut width says.
 *
 * @param dib      the image; changed by channel 4 alone
 * @param counters 256 counters, cleared first
 * @param channel  1 red, 2 green, 3 blue, 4 gray. Another channel gives 0 at 1 bit when there is a
 *                 pixel, and otherwise 1 with all counters 0
 * @return 1; 0 for null, with the counters untouched, and for other depths, with the counters
 *         cleared
 */
OMB_API int32_t omb_getchannelhistogram(PackedDib* dib, int32_t* counters, int32_t channel);

/**
 * Brightness, then contrast, each channel by itself. 1, 4 and 8 bits: the table; 24 bits: the
 * pixels; other depths stay unchanged.
 *
 * Brightness d: v becomes v + d, limited to 0..255. Contrast c above 0: 0 for v up to c, 255 for v
 * above 255 - c, between them (v - c) x 255 / (255 - 2c), truncated; from c = 128 on a hard
 * threshold. Contrast c below 0: v x (255 + 2c) / 255 - c, truncated in the division; below -127
 * the low 8 bits of the result.
 *
 * @param dib        the image
 * @param brightness any number; 0 skips the step
 * @param contrast   any number; 0 skips the step
 * @return always 1
 */
OMB_API uint32_t omb_brightnesscontrast(PackedDib* dib, int32_t brightness, int32_t contrast);

/**
 * Gamma correction: v becomes pow(v, gamma) / (pow(255, gamma) / 255) + 0.5 in double precision,
 * truncated and limited to 0..255.
 *
 * An image with a color table, of any depth, has the table changed and keeps its pixels. Otherwise
 * the pixels change; at depths other than 24 bits the pixel bytes are taken three to a pixel, which
 * is of no use for 16 and 32 bits: bring these to 24 with omb_transformat() first.
 *
 * @return 1; 0 for null and for a gamma within 1e-8 of 1, with nothing done
 */
OMB_API uint32_t omb_gammacorrection(PackedDib* dib, double gamma);

/**
 * Stretches each channel between the levels of its own histogram. The samples are the pixels at 24
 * bits and the table's entries, each once, at 1, 4 and 8 bits; those are what changes, too.
 *
 * The low level L is the first value with more than trunc(samples x low) samples at or below it, or
 * 0; the high level H is the last value with at most trunc(samples x high) at or below it, or 255.
 * v becomes 0 below L, 255 above H, otherwise (v - L) x 255 / (H - L), truncated; a value equal to
 * both stays.
 *
 * @param dib  the image
 * @param low  fraction of the samples to cut at the dark end, say 0.005; not limited
 * @param high fraction of the samples below the bright end, say 0.995; not limited
 * @return 1; 0 for null and for other depths
 */
OMB_API uint32_t omb_autolevel(PackedDib* dib, double low, double high);

/**
 * Stretches all channels between one pair of levels: the lowest L and the highest H that the three
 * channels have by the rules of omb_autolevel().
 *
 * 24 bits: the pixels are counted and changed. 1, 4 and 8 bits: the colors of the pixels are
 * counted, H takes fewer than (instead of at most) trunc(samples x high) samples, and each pixel
 * gets the entry nearest to its stretched color; the table stays. Here colors are read four bytes
 * apart from byte 40 of the image whatever its header; and at 1 bit only the first stored row is
 * counted, while the number of samples is still that of all pixels, so that such an image usually
 * stays as it is.
 *
 * @return 1; 0 for null, for other depths, for an indexed image with L = H, and when memory runs
 * out
 */
OMB_API uint32_t omb_autocontrast(PackedDib* dib, double low, double high);

/**
 * Turns the image gray: (11 blue + 59 green + 30 red) / 100, truncated.
 *
 * 1, 4 and 8 bits: the table changes, in place. 24 bits: the image is replaced by an 8-bit one
 * whose table is a ramp from black to white and whose pixels are the gray values. Its header is the
 * old one with bit count 8 and, in an information header, biClrUsed and biClrImportant 0. A
 * negative height gives a block without rows.
 *
 * @param image the image, at 24 bits replaced
 * @return 1; 0 for null, for other depths and when memory runs out
 */
OMB_API uint32_t omb_gray(PackedDib** image);

/**
 * Shows gray levels as colors: replaces the table of an image whose table is all gray.
 *
 * @param dib   the image, of any depth
 * @param table blue, green, red and an ignored byte per entry, as many entries as the image's
 * table; reserved bytes in the image become 0
 * @return 1; 0 for null and for an image that omb_iscolorful() calls colorful
 */
OMB_API uint32_t omb_pseudocolor(PackedDib* dib, const uint8_t* table);

/**
 * Proposes a threshold for omb_binary(): the median of the pixels' gray values, which are 0.3 red +
 * 0.59 green + 0.11 blue, in this order in double precision, truncated.
 *
 * With half = pixels / 2 it is the first level i from 1 on that has more than `half` pixels at or
 * below it, or i - 1 where the number of pixels at or below that is nearer to `half`.
 *
 * @return 0 to 255; 0 also for null, for other depths than 1, 4, 8 and 24, and without pixels
 */
OMB_API int32_t omb_autothreshold(const PackedDib* dib);

/**
 * Replaces the image by a 1-bit one: white (index 1) where the gray value 0.59 green + 0.3 red +
 * 0.11 blue exceeds the threshold, black (index 0) where it is below. A gray value of exactly the
 * threshold is black for thresholds up to 128 (for a 1-bit source up to 127), white above.
 *
 * The new header is the old one with bit count 1 and, in an information header, biClrUsed 2 and
 * biClrImportant 0; the table is black, white. A 1-bit source instead keeps its pixels, and its
 * table's colors become black or white: the bytes behind the header, a table of two entries and the
 * rows, are taken over as they stand. At 4 and 8 bits colors are read four bytes apart from byte 40
 * of the image, whatever its header. A negative height gives a block without rows.
 *
 * @param image     the image, replaced; 1, 4, 8 or 24 bits
 * @param threshold any number
 * @return 1; 0 for null, for other depths and when memory runs out
 */
OMB_API uint32_t omb_binary(PackedDib** image, int32_t threshold);

/**
 * Sets one channel to 0: in the table at 1, 4 and 8 bits, in the pixels at 24.
 *
 * @param dib     the image
 * @param channel 1 red, 2 green, 3 blue
 * @return 1; 0 for null, other depths and other channels
 */
OMB_API uint32_t omb_filtercolor(PackedDib* dib, uint32_t channel);

/**
 * Keeps one channel. 1, 4 and 8 bits: the table's two other channels become 0, in place. 24 bits:
 * the image is replaced by an 8-bit one whose pixels are the channel's values and whose table is a
 * ramp of that channel alone; header as with omb_gray().
 *
 * @param image   the image, at 24 bits replaced
 * @param channel 1 red, 2 green, 3 blue
 * @return 1 at 1, 4 and 8 bits. 0 in every other case, also when a 24-bit image has been replaced:
 *         its bit count is 8 then
 */
OMB_API uint32_t omb_extractcolor(PackedDib** image, uint32_t channel);

/**
 * Makes the very light and the very dark colors lighter or darker, in three steps: highlights (blue
 * + green + red above 510), shadows (sum below 255), and shadows again, as the step before left
 * them.
 *
 * A step adds its amount to green and red, limited to 0..255, and makes blue the new green plus the
 * amount, limited likewise; an amount of 0 skips the step. What changes is the table or the pixels,
 * as with omb_gammacorrection().
 *
 * @param dib        the image
 * @param highlights amount for the highlights
 * @param shadows1   first amount for the shadows
 * @param shadows2   second amount for the shadows
 * @return 0 when all amounts are 0, otherwise 1, also for null
 */
OMB_API uint32_t omb_adjustghms(PackedDib* dib, int32_t highlights, int32_t shadows1,
                                int32_t shadows2);

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
 * - 2, bilinear: (1-dy)(1-dx) of (ix, iy) + (1-dy)dx of (ix+1, iy) + (1-dx)dy of (ix, iy+1) + dx dy
 * of (ix+1, iy+1), per channel. An ix above W-2 becomes W-2 and an iy above H-2 becomes H-2, with
 * dx and dy as they are.
 * - 3, bicubic: 4 x 4 pixels at the offsets -1, 0, 1, 2. Each row's pixels are summed with the
 * weights C(1+dx), C(dx), C(1-dx), C(2-dx), then the four sums with the same weights of dy; C(t)
 * with a = |t| is 1 - 2a^2 + a^3 below 1, 4 - 8a + 5a^2 - a^3 below 2 and 0 beyond. Offsets derive
 * from the coordinate x or y in the new image and the source's last column or row L: -1 is 0 where
 * x is 0; 1 is 0 where x + 1 > L; 2 is the offset before it where x + 2 > L, except for columns at
 * 24 bits, whose last two offsets are 0 and 1 there. Samples are taken row by row; one that leaves
 * the source first moves ix or iy, for itself and all samples after it: iy to H-1-offset or
 * -offset, ix to W-1-ix or -offset.
 *
 * What still lies outside the source is clamped into it. Channel sums are limited to 0..255 and
 * truncated. At 1, 4 and 8 bits modes 2 and 3 blend color table colors and store the nearest
 * entry's index: least squared distance over red, green and blue, the lowest index on a tie, among
 * the 2, 16 or 256 entries of the depth. @{ */

/** How omb_scale() and omb_rotate() resample. */
enum OmbResampling {
  OMB_RESAMPLE_POINT = 1,    /**< one pixel, copied as it is */
  OMB_RESAMPLE_BILINEAR = 2, /**< 2 x 2 pixels, blended */
  OMB_RESAMPLE_BICUBIC = 3   /**< 4 x 4 pixels, blended */
};

/** Filters of omb_resize(), from coarse to fine. */
enum OmbResizeFilter {
  OMB_RESIZE_BOX = 1,      /**< the mean of the pixels that become one */
  OMB_RESIZE_TRIANGLE = 2, /**< smooth */
  OMB_RESIZE_CUBIC = 3,    /**< sharper */
  OMB_RESIZE_LANCZOS = 4   /**< sharpest */
};

/**
 * Scales the image. The position of pixel (x, y) is x * (W / width), y * (H / height): there is no
 * half-pixel offset.
 *
 * The color table and biSizeImage stay. After a core header the width is stored in 32 bits over
 * both size fields, so that the header's height becomes 0 for widths up to 65535; the rows are
 * complete. An image of another depth, without pixels, or scaled in another mode becomes one of the
 * new size with all pixels 0.
 *
 * @param image  the image, replaced; 1, 4, 8 or 24 bits
 * @param width  new width in pixels; 0 gives an image without pixels
 * @param height new height in rows; likewise
 * @param mode   1 point, 2 bilinear, 3 bicubic
 * @return 1; 0 for null, for the size that the image has, for a size of 2 GiB and more and when
 * memory runs out
 */
OMB_API uint32_t omb_scale(PackedDib** image, uint32_t width, uint32_t height, uint32_t mode);

/**
 * Resizes the image by a filter that suits the change of size: reduced images show no jagged edges
 * or moire, enlarged ones no blocks. omb_scale() keeps to an older contract; this is the one to
 * call.
 *
 * Images whose table is all gray, of 1, 4 or 8 bits, become 8-bit ones with a ramp from black to
 * white, so that a page of 1 bit stays readable when it shrinks; other indexed images become 24
 * bits, and 24 bits stay. The colors of pixels are those of 2, 16 or 256 entries by depth, as with
 * omb_scale(); an index beyond a short gray table counts as (299 red + 587 green + 114 blue + 500)
 * / 1000 of what is there. The header is the old one with the new size and bit count and, in an
 * information header, biClrUsed and biClrImportant 0; all else is kept, biSizeImage and the
 * resolution too. Row padding is 0. The size that the image has is done as well: the depth may
 * change.
 *
 * First rows are brought to the new width, then columns to the new height; a direction that keeps
 * its size is left as it is. Columns count from the left and rows from the top. When n pixels
 * become m, then for new pixel i (from 0, in double precision, in the order written)
 *
 *     s = n / m, u = max(1, s), c = (i + 0.5) * s
 *     first = max(0, trunc(c - r * u + 0.5)), end = min(n, trunc(c + r * u + 0.5))
 *
 * and source pixel k of first..end-1 has the weight F((k - c + 0.5) * (1 / u)), divided by the sum
 * of these weights (added from first to last), times 2^22 and rounded half away from 0. The new
 * value is (2^21 + the sum of value times weight) >> 22, limited to 0..255, after each of the two
 * directions. Radius r and filter F, with a = |x|:
 *
 * | filter      | r   | F(x)                                                                     |
 * |-------------|-----|--------------------------------------------------------------------------|
 * | 1, box      | 0.5 | 1 for -0.5 < x <= 0.5, else 0                                            |
 * | 2, triangle | 1   | 1 - a below 1, else 0                                                    |
 * | 3, cubic    | 2   | (1.5 a - 2.5) a a + 1 below 1, -0.5 (((a - 5) a + 8) a - 4) below 2, else 0
 * | | 4, Lanczos  | 3   | sinc(x) sinc(x / 3) for -3 <= x < 3, else 0 |
 *
 * sinc(x) is sin(pi x) / (x pi), and 1 at 0. There sin(pi x) is, with j the whole number nearest to
 * x (halves away from 0), t = (x - j) * pi and z = t t, t times the series 1/1! - z/3! + z^2/5! ...
 * + z^10/21! (from the last term on: sum = term + z * sum), and the negative of that for odd j.
 *
 * These are the bytes that Pillow's Image.resize() gives with BOX, BILINEAR, BICUBIC and LANCZOS.
 * Boxes are the averages of whole pixels, the filter for a fast overview; cubic and Lanczos are
 * sharper, Lanczos most so, with faint rings at hard edges.
 *
 * Beside the new image, memory is taken for the weights and for the source rows in reach of a new
 * row and 64 more, at the new width.
 *
 * @param image  the image, replaced; 1, 4, 8 or 24 bits
 * @param width  new width in pixels, 1 to 32,767
 * @param height new height in rows, 1 to 32,767
 * @param filter 1 box, 2 triangle, 3 cubic, 4 Lanczos
 * @return 1; also 1, with the image unchanged, when it has no columns or rows. 0 for null, for
 * other sizes, filters and depths, for a result of 2 GiB and more and when memory runs out
 */
OMB_API uint32_t omb_resize(PackedDib** image, uint32_t width, uint32_t height, uint32_t filter);

/**
 * Turns the image about its center; positive angles turn clockwise.
 *
 * The angle is reduced by full turns and keeps its sign. 90, 180 and 270 degrees, within 0.01, move
 * pixels exactly; the mode does not matter. Every other angle r, negative right angles included,
 * resamples: with c and s the cosine and sine of r / 180 * 3.1415926, computed in double precision
 * and rounded to single, the new width is max(|Wc - Hs|, |Wc + Hs|) + 0.5 and the new height
 * max(|Hc - Ws|, |Hc + Ws|) + 0.5, truncated. The position of pixel (x, y), y from the bottom, is
 * uc + vs + W/2, us - vc + H/2 with u = x - width/2 and v = height/2 - y, where halves are whole
 * numbers. Pixels whose truncated position is outside the source are background: all bits 1, which
 * is white at 24 bits and the highest index otherwise; so is row padding.
 *
 * The color table and biSizeImage stay. When resampling, an image of another depth, without pixels
 * or in another mode becomes background throughout.
 *
 * @param image   the image, replaced; 1, 4, 8 or 24 bits
 * @param degrees the angle
 * @param mode    1 point, 2 bilinear, 3 bicubic
 * @return 1; 0 for null, for an angle that reduces to less than 0.01 either way, one that is not
 * finite or outside 32-bit integers, for other depths or a negative size at a right angle, for a
 * size of 2 GiB and more and when memory runs out
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

/** @defgroup kernels Kernels
 * A kernel is a set of neighbours with weights; a structuring element is one whose weights are not
 * used.
 * @{ */

/**
 * A convolution kernel or structuring element.
 *
 * Entry i is the neighbour at column x + offsets[2 i], stored row y + offsets[2 i + 1], with weight
 * weights[i]. Rows count as they are stored, so that a positive dy lies higher up in the picture.
 */
typedef struct KERNAL {
  int32_t width;    /**< extent in columns: dx runs from -anchorX to width - 1 - anchorX */
  int32_t height;   /**< extent in rows: dy runs from anchorY + 1 - height to anchorY */
  int32_t anchorX;  /**< column of the pixel that receives the result, inside the width */
  int32_t anchorY;  /**< row of that pixel, inside the height */
  int32_t count;    /**< number of entries */
  int32_t bias;     /**< added to a convolution's results */
  int32_t* offsets; /**< count pairs dx, dy */
  char* name;       /**< zero-terminated name for display */
  int32_t* weights; /**< count weights */
} KERNAL;

/**
 * Creates a record. The caller fills in offsets and weights, which start as zeros.
 *
 * @param width,height,anchorX,anchorY,count,bias stored as they are
 * @param name copied; null counts as the empty string
 * @return the record, released with omb_destroyKERNAL(); null for a negative count and when memory
 *         runs out
 */
OMB_API KERNAL* omb_newKERNAL(int32_t width, int32_t height, int32_t anchorX, int32_t anchorY,
                              int32_t count, int32_t bias, const char* name);

/** Copies a record, arrays included. Null gives null, and so do a negative count and running out of
 * memory. */
OMB_API KERNAL* omb_cloneKERNAL(const KERNAL* kernel);

/**
 * Sets every field of a record to 0, pointers included, and releases nothing: for records that the
 * caller provides, before they own anything. Null is accepted.
 */
OMB_API void omb_zeroKERNAL(KERNAL* kernel);

/** Releases a record of omb_newKERNAL() or omb_cloneKERNAL() with its arrays. Null is accepted. */
OMB_API void omb_destroyKERNAL(KERNAL* kernel);

/** Numbers of the built-in records, for omb_getKERNAL(). */
enum OmbKernal {
  OMB_KERNAL_CIRCLE_3X3 = 0,    /**< shape: a disc, 3x3 */
  OMB_KERNAL_CIRCLE_5X5 = 1,    /**< shape: a disc, 5x5 */
  OMB_KERNAL_CIRCLE_7X7 = 2,    /**< shape: a disc, 7x7 */
  OMB_KERNAL_CIRCLE_11X11 = 3,  /**< shape: a disc, 11x11 */
  OMB_KERNAL_COLOMN_1X3 = 4,    /**< shape: three pixels one above the other, 1x3 */
  OMB_KERNAL_CROSS_3X3 = 5,     /**< shape: a plus, 3x3 */
  OMB_KERNAL_HIPASS_3X3 = 6,    /**< sharpens, 3x3 */
  OMB_KERNAL_HIPASS_5X5 = 7,    /**< sharpens, 5x5 */
  OMB_KERNAL_HIPASS_7X7 = 8,    /**< sharpens, 7x7 */
  OMB_KERNAL_HIGAUSS_5X5 = 9,   /**< sharpens a blurred picture, 5x5 */
  OMB_KERNAL_HIGAUSS_7X7 = 10,  /**< sharpens a blurred picture, 7x7 */
  OMB_KERNAL_HIGAUSS_9X9 = 11,  /**< sharpens a blurred picture, 9x9 */
  OMB_KERNAL_HORZEDGE_3X3 = 12, /**< edges that run left to right, 3x3 */
  OMB_KERNAL_HORZEDGE_5X5 = 13, /**< edges that run left to right, 5x5 */
  OMB_KERNAL_HORZEDGE_7X7 = 14, /**< edges that run left to right, 7x7 */
  OMB_KERNAL_LAPLACE_3X3 = 15,  /**< edges of all directions, 3x3 */
  OMB_KERNAL_LAPLACE_5X5 = 16,  /**< edges of all directions, 5x5 */
  OMB_KERNAL_LAPLACE_7X7 = 17,  /**< edges of all directions, 7x7 */
  OMB_KERNAL_LOPASS_3X3 = 18,   /**< smooths, 3x3 */
  OMB_KERNAL_LOPASS_5X5 = 19,   /**< smooths, 5x5 */
  OMB_KERNAL_LOPASS_7X7 = 20,   /**< smooths, 7x7 */
  OMB_KERNAL_RING_3X3 = 21,     /**< shape: a disc without its middle, 3x3 */
  OMB_KERNAL_RING_5X5 = 22,     /**< shape: a disc without its middle, 5x5 */
  OMB_KERNAL_RING_7X7 = 23,     /**< shape: a disc without its middle, 7x7 */
  OMB_KERNAL_ROW_3X1 = 24,      /**< shape: pixels side by side, 3x1 */
  OMB_KERNAL_ROW_5X1 = 25,      /**< shape: pixels side by side, 5x1 */
  OMB_KERNAL_ROW_7X1 = 26,      /**< shape: pixels side by side, 7x1 */
  OMB_KERNAL_SCULPT = 27,       /**< relief on mid-gray */
  OMB_KERNAL_SQUARE_2X2 = 28,   /**< shape: a square, 2x2 */
  OMB_KERNAL_SQUARE_3X3 = 29,   /**< shape: a square, 3x3 */
  OMB_KERNAL_SQUARE_5X5 = 30,   /**< shape: a square, 5x5 */
  OMB_KERNAL_SQUARE_7X7 = 31,   /**< shape: a square, 7x7 */
  OMB_KERNAL_TOPHAT_3X3 = 32,   /**< light specks, 3x3 */
  OMB_KERNAL_TOPHAT_5X5 = 33,   /**< light specks, 5x5 */
  OMB_KERNAL_TOPHAT_7X7 = 34,   /**< light specks, 7x7 */
  OMB_KERNAL_UNSHARP_3X3 = 35,  /**< sharpens gently, 3x3 */
  OMB_KERNAL_UNSHARP_5X5 = 36,  /**< sharpens gently, 5x5 */
  OMB_KERNAL_UNSHARP_7X7 = 37,  /**< sharpens gently, 7x7 */
  OMB_KERNAL_VARIANCE_3X3 = 38, /**< smooths, as lopass, 3x3 */
  OMB_KERNAL_VERTEDGE_3X3 = 39, /**< edges that run top to bottom, 3x3 */
  OMB_KERNAL_VERTEDGE_5X5 = 40, /**< edges that run top to bottom, 5x5 */
  OMB_KERNAL_VERTEDGE_7X7 = 41, /**< edges that run top to bottom, 7x7 */
  OMB_KERNAL_WELL_3X3 = 42,     /**< dark specks, 3x3 */
  OMB_KERNAL_WELL_5X5 = 43,     /**< dark specks, 5x5 */
  OMB_KERNAL_WELL_7X7 = 44      /**< dark specks, 7x7 */
};

/**
 * A built-in record: a kernel, or a shape whose weights are all 0.
 *
 * The record lives as long as the library and must not be changed or released. Its name is the one
 * drawn here; that of 27 ends in a blank. The bias is 0, of 27 it is 128.
 *
 * The drawings show records as they lie on the picture. A dot is no entry, an `o` an entry with
 * weight 0. The first line has the highest dy, the first column the lowest dx. The middle is the
 * pixel that receives the result; of "Square 2x2" it is the upper left one. Entries are in the
 * order of reading: line by line, each from left to right.
 *
 * Three more have no number; omb_EnhancePage() uses them.
 *
 * @verbatim
 * 0 Circle 3x3   1 Circle 5x5   2 Circle 7x7    3 Circle 11x11          4 Colomn 1x3
 * o o o          . o o o .      . . o o o . .   . . . o o o o o . . .   o
 * o o o          o o o o o      . o o o o o .   . . o o o o o o o . .   o
 * o o o          o o o o o      o o o o o o o   . o o o o o o o o o .   o
 *                o o o o o      o o o o o o o   o o o o o o o o o o o
 *                . o o o .      o o o o o o o   o o o o o o o o o o o
 *                               . o o o o o .   o o o o o o o o o o o
 *                               . . o o o . .   o o o o o o o o o o o
 *                                               o o o o o o o o o o o
 *                                               . o o o o o o o o o .
 *                                               . . o o o o o o o . .
 *                                               . . . o o o o o . . .
 *
 * 5 Cross 3x3   6 hipass 3x3   7 hipass 5x5     8 hipass 7x7           9 higauss 5x5
 * . o .         -1 -1 -1        . -1 -1 -1  .    .  . -1 -1 -1  .  .    . -1 -1 -1  .
 * o o o         -1  9 -1       -1 -1 -1 -1 -1    . -1 -1 -1 -1 -1  .   -1  .  2  . -1
 * . o .         -1 -1 -1       -1 -1 21 -1 -1   -1 -1 -1 -1 -1 -1 -1   -1  2  5  2 -1
 *                              -1 -1 -1 -1 -1   -1 -1 -1 37 -1 -1 -1   -1  .  2  . -1
 *                               . -1 -1 -1  .   -1 -1 -1 -1 -1 -1 -1    . -1 -1 -1  .
 *                                                . -1 -1 -1 -1 -1  .
 *                                                .  . -1 -1 -1  .  .
 *
 * 10 higauss 7x7         11 higauss 9x9               12 horzedge 3x3   13 horzedge 5x5
 *  .  . -1 -1 -1  .  .   -1  . -1 -3 -4 -3 -1  . -1   -1 -2 -1          -1 -1 -1 -1 -1
 *  . -1 -1  . -1 -1  .    . -2 -7 -8 -7 -8 -7 -2  .    .  .  .          -1 -1 -1 -1 -1
 * -1 -1  2  4  2 -1 -1   -1 -7 -5  3  7  3 -5 -7 -1    1  2  1           .  .  .  .  .
 * -1  .  4 10  4  . -1   -3 -8  3 19 27 19  3 -8 -3                      1  1  1  1  1
 * -1 -1  2  4  2 -1 -1   -4 -7  7 27 42 27  7 -7 -4                      1  1  1  1  1
 *  .  .  .  .  .  .  .   -3 -8  3 19 27 19  3 -8 -3
 *  .  . -1 -1 -1  .  .   -1 -7 -5  3  7  3 -5 -7 -1
 *                         . -2 -7 -8 -7 -8 -7 -2  .
 *                        -1  . -1 -3 -4 -3 -1  . -1
 *
 * 14 horzedge 7x7        15 laplace 3x3   16 laplace 5x5   17 laplace 7x7         18 lopass 3x3
 * -1 -1 -1 -1 -1 -1 -1   -1 -1 -1          . -1 -1 -1  .   -1 -1 -1 -1 -1 -1 -1   1 1 1
 * -1 -1 -1 -1 -1 -1 -1   -1  8 -1         -1  .  1  . -1   -1 -1 -1 -1 -1 -1 -1   1 . 1
 * -1 -1 -1 -1 -1 -1 -1   -1 -1 -1         -1  1  8  1 -1   -1 -1 -1 -1 -1 -1 -1   1 1 1
 *  .  .  .  .  .  .  .                    -1  .  1  . -1   -1 -1 -1 48 -1 -1 -1
 *  1  1  1  1  1  1  1                     . -1 -1 -1  .   -1 -1 -1 -1 -1 -1 -1
 *  1  1  1  1  1  1  1                                     -1 -1 -1 -1 -1 -1 -1
 *  1  1  1  1  1  1  1                                     -1 -1 -1 -1 -1 -1 -1
 *
 * 19 lopass 5x5   20 lopass 7x7   21 Ring 3x3   22 Ring 5x5   23 Ring 7x7     24 Row 3x1
 * 1 1 1 1 1       1 1 1 1 1 1 1   o o o         . o o o .     . . o o o . .   o o o
 * 1 1 1 1 1       1 1 1 1 1 1 1   o . o         o o . o o     . o o o o o .
 * 1 1 1 1 1       1 1 1 1 1 1 1   o o o         o . . . o     o o . . . o o
 * 1 1 1 1 1       1 1 1 1 1 1 1                 o o . o o     o o . . . o o
 * 1 1 1 1 1       1 1 1 1 1 1 1                 . o o o .     o o . . . o o
 *                 1 1 1 1 1 1 1                               . o o o o o .
 *                 1 1 1 1 1 1 1                               . . o o o . .
 *
 * 25 Row 5x1   26 Row 7x1      27 sculpt   28 Square 2x2   29 Square 3x3   30 Square 5x5
 * o o o o o    o o o o o o o   -1  .  .    o o             o o o           o o o o o
 *                               .  .  .    o o             o o o           o o o o o
 *                               .  .  1                    o o o           o o o o o
 *                                                                          o o o o o
 *                                                                          o o o o o
 *
 * 31 Square 7x7   32 tophat 3x3   33 tophat 5x5    34 tophat 7x7          35 unsharp 3x3
 * o o o o o o o   -1 -1 -1         . -1 -1 -1  .    .  . -1 -1 -1  .  .   -1 -1 -1
 * o o o o o o o   -1  8 -1        -1 -1  3 -1 -1    . -1 -1 -1 -1 -1  .   -1 17 -1
 * o o o o o o o   -1 -1 -1        -1  3  4  3 -1   -1 -1  3  3  3 -1 -1   -1 -1 -1
 * o o o o o o o                   -1 -1  3 -1 -1   -1 -1  3  4  3 -1 -1
 * o o o o o o o                    . -1 -1 -1  .   -1 -1  3  3  3 -1 -1
 * o o o o o o o                                     . -1 -1 -1 -1 -1  .
 * o o o o o o o                                     .  . -1 -1 -1  .  .
 *
 * 36 unsharp 5x5   37 unsharp 7x7         38 variance 3x3   39 vertedge 3x3   40 vertedge 5x5
 * -1 -1 -1 -1 -1   -1 -1 -1 -1 -1 -1 -1   1 1 1             -1  .  1          -1 -1  .  1  1
 * -1 -1 -1 -1 -1   -1 -1 -1 -1 -1 -1 -1   1 . 1             -2  .  2          -1 -1  .  1  1
 * -1 -1 49 -1 -1   -1 -1 -1 -1 -1 -1 -1   1 1 1             -1  .  1          -1 -1  .  1  1
 * -1 -1 -1 -1 -1   -1 -1 -1 97 -1 -1 -1                                       -1 -1  .  1  1
 * -1 -1 -1 -1 -1   -1 -1 -1 -1 -1 -1 -1                                       -1 -1  .  1  1
 *                  -1 -1 -1 -1 -1 -1 -1
 *                  -1 -1 -1 -1 -1 -1 -1
 *
 * 41 vertedge 7x7        42 well 3x3   43 well 5x5      44 well 7x7            gauss 3x3
 * -1 -1 -1  .  1  1  1    1  1  1       .  1  1  1  .    .  .  1  1  1  .  .   1 2 1
 * -1 -1 -1  .  1  1  1    1 -8  1       1  1 -3  1  1    .  1  1  1  1  1  .   2 4 2
 * -1 -1 -1  .  1  1  1    1  1  1       1 -3 -4 -3  1    1  1 -3 -3 -3  1  1   1 2 1
 * -1 -1 -1  .  1  1  1                  1  1 -3  1  1    1  1 -3 -4 -3  1  1
 * -1 -1 -1  .  1  1  1                  .  1  1  1  .    1  1 -3 -3 -3  1  1
 * -1 -1 -1  .  1  1  1                                   .  1  1  1  1  1  .
 * -1 -1 -1  .  1  1  1                                   .  .  1  1  1  .  .
 *
 * gauss 5x5   gauss 7x7
 * 1 1 2 1 1    1  1  2  2  2  1  1
 * 1 2 4 2 1    1  2  2  4  2  2  1
 * 2 4 8 4 2    2  2  4  8  4  2  2
 * 1 2 4 2 1    2  4  8 16  8  4  2
 * 1 1 2 1 1    2  2  4  8  4  2  2
 *              1  2  2  4  2  2  1
 *              1  1  2  2  2  1  1
 * @endverbatim
 *
 * "higauss 7x7" is irregular: its line dy = -2 is empty, (-2, 0) and (2, 0) are missing, and after
 * the 29 entries drawn come four more with weight -1: (0, 0) and three times (-1, -1).
 *
 * @param index one of ::OmbKernal
 * @return null for 45 and above
 */
OMB_API const KERNAL* omb_getKERNAL(uint32_t index);

/** @} */

/** @defgroup filters Neighbourhood filters
 *
 * Each result depends on the image as it was before the call. Images of 1, 4 and 8 bits are
 * filtered as colors, and a result becomes the index of the nearest entry (least squared distance,
 * the lowest index on a tie) of a palette of 2, 16 or 256 entries, which beyond a shorter color
 * table continues in the bytes that follow. A border of the image is set to zero bytes (black, or
 * index 0), and so is the padding of rows; an image that is all border, and an image of another
 * depth than 1, 4, 8 and 24 bits, comes back with zero bytes only.
 *
 * omb_DoConvoluteDIB() differs: it takes the bytes of an 8-bit image as values and keeps what it
 * does not compute. Without memory, none of these functions changes the image.
 * @{ */

/**
 * Numbers of the kernels of omb_convolute(), each with its weights, row by row. The first row lies
 * on the row stored before the pixel's own, which is the one below it in the picture. Directions
 * are those of the picture: N is up, W left.
 */
enum OmbConvolution {
  /* smooth */
  OMB_CONVOLUTE_BOX_3X3 = 1,      /**< 1 1 1 / 1 1 1 / 1 1 1 */
  OMB_CONVOLUTE_BOX_5X5 = 2,      /**< 1 1 1 1 1 / 1 1 1 1 1 / 1 1 1 1 1 / 1 1 1 1 1 / 1 1 1 1 1 */
  OMB_CONVOLUTE_BINOMIAL_3X3 = 3, /**< 1 2 1 / 2 4 2 / 1 2 1 */
  OMB_CONVOLUTE_CENTERED_5X5 = 4, /**< 1 1 1 1 1 / 1 4 4 4 1 / 1 4 12 4 1 / 1 4 4 4 1 / 1 1 1 1 1 */
  /* sharpen; 8 keeps flat areas and reverses local detail */
  OMB_CONVOLUTE_SHARPEN_SOFT = 5,   /**< -1 -2 -1 / -2 19 -2 / -1 -2 -1 */
  OMB_CONVOLUTE_SHARPEN_PLUS = 6,   /**< 0 -1 0 / -1 5 -1 / 0 -1 0 */
  OMB_CONVOLUTE_SHARPEN_SQUARE = 7, /**< -1 -1 -1 / -1 9 -1 / -1 -1 -1 */
  /** 0 -1 -1 -1 0 / -1 2 -4 2 -1 / -1 -4 13 -4 -1 / -1 2 -4 2 -1 / 0 -1 -1 -1 0 */
  OMB_CONVOLUTE_REVERSE_5X5 = 8,
  /* Laplacian: local detail on black */
  OMB_CONVOLUTE_LAPLACE_PLUS = 9,     /**< 0 -1 0 / -1 4 -1 / 0 -1 0 */
  OMB_CONVOLUTE_LAPLACE_SQUARE = 10,  /**< -1 -1 -1 / -1 8 -1 / -1 -1 -1 */
  OMB_CONVOLUTE_LAPLACE_CORNERS = 11, /**< 1 -2 1 / -2 4 -2 / 1 -2 1 */
  /* Sobel gradient: bright where it is lighter toward that side */
  OMB_CONVOLUTE_SOBEL_W = 12,  /**< 1 0 -1 / 2 0 -2 / 1 0 -1 */
  OMB_CONVOLUTE_SOBEL_S = 13,  /**< 1 2 1 / 0 0 0 / -1 -2 -1 */
  OMB_CONVOLUTE_SOBEL_E = 14,  /**< -1 0 1 / -2 0 2 / -1 0 1 */
  OMB_CONVOLUTE_SOBEL_N = 15,  /**< -1 -2 -1 / 0 0 0 / 1 2 1 */
  OMB_CONVOLUTE_SOBEL_NW = 16, /**< 0 -1 -2 / 1 0 -1 / 2 1 0 */
  OMB_CONVOLUTE_SOBEL_SW = 17, /**< 2 1 0 / 1 0 -1 / 0 -1 -2 */
  OMB_CONVOLUTE_SOBEL_NE = 18, /**< -2 -1 0 / -1 0 1 / 0 1 2 */
  OMB_CONVOLUTE_SOBEL_SE = 19, /**< 0 1 2 / -1 0 1 / -2 -1 0 */
  /* the middle minus the neighbour on the other side */
  OMB_CONVOLUTE_STEP_W = 20,  /**< 0 0 0 / 0 1 -1 / 0 0 0 */
  OMB_CONVOLUTE_STEP_S = 21,  /**< 0 0 0 / 0 1 0 / 0 -1 0 */
  OMB_CONVOLUTE_STEP_E = 22,  /**< 0 0 0 / -1 1 0 / 0 0 0 */
  OMB_CONVOLUTE_STEP_N = 23,  /**< 0 -1 0 / 0 1 0 / 0 0 0 */
  OMB_CONVOLUTE_STEP_NW = 24, /**< 0 0 -1 / 0 1 0 / 0 0 0 */
  OMB_CONVOLUTE_STEP_SW = 25, /**< 0 0 0 / 0 1 0 / 0 0 -1 */
  OMB_CONVOLUTE_STEP_NE = 26, /**< -1 0 0 / 0 1 0 / 0 0 0 */
  OMB_CONVOLUTE_STEP_SE = 27, /**< 0 0 0 / 0 1 0 / -1 0 0 */
  /* compass mask: bright where it is lighter toward that side */
  OMB_CONVOLUTE_COMPASS_W = 28,  /**< 1 1 -1 / 1 -2 -1 / 1 1 -1 */
  OMB_CONVOLUTE_COMPASS_S = 29,  /**< 1 1 1 / 1 -2 1 / -1 -1 -1 */
  OMB_CONVOLUTE_COMPASS_E = 30,  /**< -1 1 1 / -1 -2 1 / -1 1 1 */
  OMB_CONVOLUTE_COMPASS_N = 31,  /**< -1 -1 -1 / 1 -2 1 / 1 1 1 */
  OMB_CONVOLUTE_COMPASS_NW = 32, /**< 1 -1 -1 / 1 -2 -1 / 1 1 1 */
  OMB_CONVOLUTE_COMPASS_SW = 33, /**< 1 1 1 / 1 -2 -1 / 1 -1 -1 */
  OMB_CONVOLUTE_COMPASS_NE = 34, /**< -1 -1 1 / -1 -2 1 / 1 1 1 */
  OMB_CONVOLUTE_COMPASS_SE = 35, /**< 1 1 1 / -1 -2 1 / -1 -1 1 */
  /* lines that are lighter than both sides */
  OMB_CONVOLUTE_LINE_LEVEL = 36,   /**< -1 -1 -1 / 2 2 2 / -1 -1 -1 */
  OMB_CONVOLUTE_LINE_UPRIGHT = 37, /**< -1 2 -1 / -1 2 -1 / -1 2 -1 */
  OMB_CONVOLUTE_LINE_RISING = 38,  /**< 2 -1 -1 / -1 2 -1 / -1 -1 2 */
  OMB_CONVOLUTE_LINE_FALLING = 39  /**< -1 -1 2 / -1 2 -1 / 2 -1 -1 */
};

/**
 * Convolution with one of 39 kernels: smooths, sharpens or finds edges.
 *
 * Each channel becomes the sum of its weighted neighbours, divided by the sum of the weights unless
 * that is 0, truncated toward zero and clamped to 0..255. The border of the image becomes zero: 2
 * pixels for the three 5x5 kernels, 1 pixel for the others.
 *
 * @param dib  the image; 1, 4, 8 or 24 bits
 * @param type one of ::OmbConvolution: 1 to 39; other numbers leave the image unchanged
 */
OMB_API void omb_convolute(PackedDib* dib, uint32_t type);

/**
 * Convolution with any kernel, one or more times, of 8-bit values or of the channels of 24 bits.
 *
 * A result is the sum of weighted neighbours, divided by the sum of the weights unless that is 0
 * (truncated toward zero); then, unless strength is 10, (result - p) x strength / 10 + p for the
 * pixel's own value p (truncated toward zero); then plus bias; then clamped to 0..255. All of this
 * in 32-bit arithmetic that wraps. Pixels for which the kernel's extent leaves the image keep their
 * value.
 *
 * Width and height are taken modulo 65536. A row is ((bits x planes x width + 31) / 32) x 4 bytes
 * long, modulo 65536, with these fields at their information header positions even for a core
 * header; bytes outside the image count as 0 and are not written. An image without planes does not
 * change.
 *
 * @param dib      the image; other depths than 8 and 24 bits do not change
 * @param kernel   a record whose offsets lie in the extent that it describes
 * @param passes   how often; 0 or less leaves the image unchanged
 * @param strength the share of the result in tenths; more than 10 overshoots
 * @return 1; 0 for null, for other records, for pixels that do not fit the row length, and when
 * memory runs out
 */
OMB_API int32_t omb_DoConvoluteDIB(PackedDib* dib, const KERNAL* kernel, int32_t passes,
                                   int32_t strength);

/**
 * Directions of omb_emboss(). Direction n uses kernel n + 12 of ::OmbConvolution. What is lighter
 * appears raised, and lit from the side in the name: N is above in the picture, W left.
 */
enum OmbEmboss {
  OMB_EMBOSS_SOFT_E = 0,     /**< soft, lit from the right */
  OMB_EMBOSS_SOFT_N = 1,     /**< soft, lit from above */
  OMB_EMBOSS_SOFT_W = 2,     /**< soft, lit from the left */
  OMB_EMBOSS_SOFT_S = 3,     /**< soft, lit from below */
  OMB_EMBOSS_SOFT_SE = 4,    /**< soft, lit from below right */
  OMB_EMBOSS_SOFT_NE = 5,    /**< soft, lit from above right */
  OMB_EMBOSS_SOFT_SW = 6,    /**< soft, lit from below left */
  OMB_EMBOSS_SOFT_NW = 7,    /**< soft, lit from above left */
  OMB_EMBOSS_FINE_E = 8,     /**< fine, lit from the right */
  OMB_EMBOSS_FINE_N = 9,     /**< fine, lit from above */
  OMB_EMBOSS_FINE_W = 10,    /**< fine, lit from the left */
  OMB_EMBOSS_FINE_S = 11,    /**< fine, lit from below */
  OMB_EMBOSS_FINE_SE = 12,   /**< fine, lit from below right */
  OMB_EMBOSS_FINE_NE = 13,   /**< fine, lit from above right */
  OMB_EMBOSS_FINE_SW = 14,   /**< fine, lit from below left */
  OMB_EMBOSS_FINE_NW = 15,   /**< fine, lit from above left */
  OMB_EMBOSS_STRONG_E = 16,  /**< strong, lit from the right */
  OMB_EMBOSS_STRONG_N = 17,  /**< strong, lit from above */
  OMB_EMBOSS_STRONG_W = 18,  /**< strong, lit from the left */
  OMB_EMBOSS_STRONG_S = 19,  /**< strong, lit from below */
  OMB_EMBOSS_STRONG_SE = 20, /**< strong, lit from below right */
  OMB_EMBOSS_STRONG_NE = 21, /**< strong, lit from above right */
  OMB_EMBOSS_STRONG_SW = 22, /**< strong, lit from below left */
  OMB_EMBOSS_STRONG_NW = 23, /**< strong, lit from above left */
  OMB_EMBOSS_LEVEL = 24,     /**< lines from left to right */
  OMB_EMBOSS_UPRIGHT = 25,   /**< lines from top to bottom */
  OMB_EMBOSS_RISING = 26,    /**< lines from below left to above right */
  OMB_EMBOSS_FALLING = 27    /**< lines from above left to below right */
};

/**
 * Relief: light areas appear raised on a ground of one color.
 *
 * Each channel becomes the sum of its neighbours, weighted as omb_convolute()'s kernel
 * 12 + direction says, plus the color's channel, clamped to 0..255. These kernels sum to 0, so that
 * flat areas take the color. A border of 1 pixel becomes zero.
 *
 * @param dib       the image; 1, 4, 8 or 24 bits
 * @param direction one of ::OmbEmboss: 0 to 27
 * @param color     0x00BBGGRR; 0x808080 is the usual ground
 * @return 1; 0 for null, for other directions and when memory runs out
 */
OMB_API uint32_t omb_emboss(PackedDib* dib, uint32_t direction, uint32_t color);

/**
 * Edges: for each channel a third (truncated) of the strongest of four differences in the 3x3
 * neighbourhood: the row before against the row after, the column left against the column right,
 * and each of two corners with its two neighbours against the opposite ones.
 *
 * @param dib the image; 1, 4, 8 or 24 bits; a border of 1 pixel becomes zero
 */
OMB_API void omb_sobel(PackedDib* dib);

/**
 * The median, channel by channel, of nine pixels: the pixel itself and the two next to it in each
 * of the four directions.
 *
 * @param dib the image; 1, 4, 8 or 24 bits; a border of 3 pixels becomes zero
 */
OMB_API void omb_medianblur(PackedDib* dib);

/** @} */

/** @defgroup morphology Morphology
 *
 * Images of 24 bits are processed channel by channel. Those of 1, 4 and 8 bits are treated as
 * colors and results become the nearest palette entry, as with the filters; only
 * omb_DoKernalMorphDIB() takes the bytes of an 8-bit image as values. Images of other depths do not
 * change, and no image does without memory. The padding of rows keeps its bytes.
 * @{ */

/**
 * Dilation: the maximum, channel by channel, of the 3x3 pixels at columns x - 2 to x and stored
 * rows y - 2 to y. Bright detail therefore moves toward higher columns and stored rows; omb_erode()
 * moves it back. Positions outside the image are those of the nearest pixel inside.
 */
OMB_API void omb_dilate(PackedDib* dib);

/** Erosion: the minimum over columns x to x + 2 and stored rows y to y + 2; otherwise as
 * omb_dilate(). */
OMB_API void omb_erode(PackedDib* dib);

/** Opening: erosion, then dilation. Removes bright detail smaller than 3x3. */
OMB_API void omb_mathopen(PackedDib* dib);

/** Closing: dilation, then erosion. Removes dark detail smaller than 3x3. */
OMB_API void omb_mathclose(PackedDib* dib);

/** Opening, then closing. */
OMB_API void omb_denoise(PackedDib* dib);

/**
 * Inner edges: the image minus its erosion, channel by channel. With 8 and 24 bits a difference
 * stops at 0; with 1 and 4 bits, where the nearest entry may be brighter than the minimum, it is
 * taken modulo 256. Width and height are taken modulo 65536 for the difference.
 */
OMB_API void omb_pickedge(PackedDib* dib);

/** The dilation, exactly as omb_dilate(). */
OMB_API void omb_gradientize(PackedDib* dib);

/**
 * Opening plus erosion, channel by channel, at most 255. 24 bits only; width and height are taken
 * modulo 65536 for the sum.
 */
OMB_API void omb_opencompose(PackedDib* dib);

/**
 * The image minus its opening, channel by channel, at least 0: bright detail smaller than 3x3. 24
 * bits only; width and height are taken modulo 65536 for the difference.
 */
OMB_API void omb_tophat(PackedDib* dib);

/** Operations of omb_DoKernalMorphDIB() (the first four) and omb_MorphologicalPage(). */
enum OmbMorphology {
  OMB_MORPH_ERODE = 0,           /**< the least value: dark areas grow */
  OMB_MORPH_DILATE = 1,          /**< the greatest value: light areas grow */
  OMB_MORPH_OPEN = 2,            /**< erosion, then dilation: light detail goes */
  OMB_MORPH_CLOSE = 3,           /**< dilation, then erosion: dark detail goes */
  OMB_MORPH_GRADIENT = 4,        /**< dilation minus erosion: edges */
  OMB_MORPH_LIGHT_DETAIL = 5,    /**< the image minus its opening */
  OMB_MORPH_DARK_DETAIL = 6,     /**< the closing minus the image */
  OMB_MORPH_CLEAN_BACKGROUND = 7 /**< the image relative to its closing: even paper */
};

/**
 * Erosion, dilation, opening or closing with any structuring element.
 *
 * An erosion is the minimum, a dilation the maximum, over the pixels at the element's offsets;
 * offsets that leave the image are skipped. A channel whose minimum is 255 (maximum is 0) keeps its
 * value.
 *
 * Width and height are taken modulo 65536. A row is ((bit count x planes x width + 31) / 32) x 4
 * bytes long, modulo 65536, with bit count and planes at their information header positions even
 * for a core header; bytes outside the image count as 0 and are not written.
 *
 * @param dib        the image
 * @param bits       8: one value per byte; 24: three channels per pixel. The image's own bit count
 * only decides the row length
 * @param op         0 erode, 1 dilate, 2 open, 3 close
 * @param element    only its count and offsets matter
 * @param iterations how often erosion or dilation is repeated; an opening or closing repeats its
 * first step that often, then its second. 0 or less leaves the image unchanged
 * @return 1; 0 for null, other bits and ops, pixels that do not fit the row length, no planes, and
 * when memory runs out
 */
OMB_API int32_t omb_DoKernalMorphDIB(PackedDib* dib, int32_t bits, int32_t op,
                                     const KERNAL* element, int32_t iterations);

/** @} */

/** @defgroup page Page processing
 * Filters for images of pages, in place. Convolutions take omb_DoConvoluteDIB()'s depths and keep
 * its promises; "lopass 3x3" and the like are names of omb_getKERNAL()'s records.
 *
 * The row length of all of them is ((bit count x planes x width + 31) / 32) x 4 bytes, with bit
 * count and planes at their information header positions even for a core header; bytes outside the
 * image count as 0 and are not written. An image without planes does not change. @{ */

/** Sizes of page filters. OMB_ENHANCE_HIGAUSS is a step larger: 5x5, 7x7, 9x9. */
enum OmbPageSize {
  OMB_SIZE_3X3 = 0, /**< 3x3 pixels */
  OMB_SIZE_5X5 = 1, /**< 5x5 pixels */
  OMB_SIZE_7X7 = 2  /**< 7x7 pixels */
};

/** Shapes of omb_MorphologicalPage(). */
enum OmbPageShape {
  OMB_SHAPE_SQUARE = 0, /**< a square */
  OMB_SHAPE_CIRCLE = 1, /**< a disc; in 3x3 the square */
  OMB_SHAPE_ROW = 2,    /**< pixels side by side */
  OMB_SHAPE_COLUMN = 3  /**< pixels one above the other */
};

/** Filters of omb_EnhancePage(). */
enum OmbEnhancement {
  OMB_ENHANCE_LOPASS = 0,  /**< smooths: all pixels of the square count the same */
  OMB_ENHANCE_HIPASS = 1,  /**< sharpens */
  OMB_ENHANCE_GAUSS = 2,   /**< smooths: near pixels count more */
  OMB_ENHANCE_HIGAUSS = 3, /**< sharpens a blurred picture */
  OMB_ENHANCE_TONE = 4,    /**< tone curves */
  OMB_ENHANCE_UNSHARP = 5, /**< sharpens gently */
  OMB_ENHANCE_MEDIAN = 7,  /**< removes specks */
  OMB_ENHANCE_RANK = 8     /**< takes the value at a percentile of the square */
};

/** Curves of OMB_ENHANCE_TONE. */
enum OmbToneCurve {
  OMB_TONE_EQUALIZE = 0, /**< spreads the levels that occur most */
  OMB_TONE_STRETCH = 1,  /**< stretches the levels that occur to black and white */
  OMB_TONE_WHITEN = 2,   /**< makes the paper white */
  OMB_TONE_LOGARITHM = 3 /**< lightens shadows */
};

/** Where OMB_ENHANCE_TONE takes its curves from. */
enum OmbToneScope {
  OMB_SCOPE_IMAGE = 0, /**< one curve for the whole image */
  OMB_SCOPE_BLOCKS = 1 /**< a curve for each block of the image, blended between them */
};

/** Filters of omb_EdgePage(). */
enum OmbEdge {
  OMB_EDGE_SOBEL = 0,      /**< Sobel gradient magnitude */
  OMB_EDGE_ROBERTS = 1,    /**< Roberts cross gradient magnitude: finer */
  OMB_EDGE_SCULPT = 2,     /**< relief on mid-gray */
  OMB_EDGE_LAPLACE = 3,    /**< all directions */
  OMB_EDGE_HORIZONTAL = 5, /**< edges that run left to right */
  OMB_EDGE_VERTICAL = 6    /**< edges that run top to bottom */
};

/**
 * Smooths, sharpens or rank-filters a page.
 *
 * | mode | filter, for a size of 0, 1, 2                                  |
 * |------|----------------------------------------------------------------|
 * | 0    | omb_DoConvoluteDIB() with "lopass" 3x3, 5x5, 7x7               |
 * | 1    | the same with "hipass" 3x3, 5x5, 7x7                           |
 * | 2    | the same with "gauss" 3x3, 5x5, 7x7, which have no index       |
 * | 3    | the same with "higauss" 5x5, 7x7, 9x9                          |
 * | 4    | as mode 5, unless toneScope is 0 or 1: then 0                  |
 * | 5    | the same with "unsharp" 3x3, 5x5, 7x7                          |
 * | 7    | rank order in 3x3, 5x5, 7x7 at percentile 50: the median       |
 * | 8    | rank order in 3x3, 5x5, 7x7 at a percentile                    |
 *
 * Rank order, pass after pass: with n the number of pixels in the square, a value becomes the one
 * at index (n - 1) x percentile / 100 of the square's sorted values. 24 bits: blue, green and red
 * apart. Other depths: bytes, whatever they hold, as many columns as the image is wide but not
 * beyond the row. A band of 1, 2 or 3 pixels keeps its values. Width and height count in their low
 * 16 bits, and so does the row length that follows from them.
 *
 * @param dib        the image
 * @param size       one of ::OmbPageSize: 0 to 2
 * @param passes     how often; below 1 the image is unchanged
 * @param strength   the share of a convolution in tenths, as in omb_DoConvoluteDIB()
 * @param block      without effect
 * @param percentile of mode 8: 0 (the least value) to 100 (the greatest)
 * @param mode       one of ::OmbEnhancement
 * @param toneScope  see mode 4
 * @param toneCurve  without effect
 * @return 1; 0 for null, other modes, sizes and percentiles, rows that overlap, and when memory
 *         runs out
 */
OMB_API int32_t omb_EnhancePage(PackedDib* dib, int32_t size, int32_t passes, int32_t strength,
                                int32_t block, int32_t percentile, int32_t mode, int32_t toneScope,
                                int32_t toneCurve);

/**
 * Finds edges.
 *
 * | mode | filter, for a size of 0, 1, 2                                  |
 * |------|----------------------------------------------------------------|
 * | 0    | Sobel gradient magnitude (any size)                            |
 * | 1    | Roberts cross gradient magnitude (any size)                    |
 * | 2    | omb_DoConvoluteDIB() with "sculpt " (any size)                 |
 * | 3    | the same with "laplace" 3x3, 5x5, 7x7                          |
 * | 5    | the same with "horzedge" 3x3, 5x5, 7x7                         |
 * | 6    | the same with "vertedge" 3x3, 5x5, 7x7                         |
 *
 * Magnitudes are sqrt(x^2 + y^2), truncated, of bytes at 8 bits and of blue, green and red apart at
 * 24 bits; other depths stay unchanged. Rows count as they are stored.
 * Sobel: x and y are the differences between columns and rows of the 3x3 square with weights
 * 1, 2, 1; the magnitude is limited to 255. A frame of one pixel keeps its values.
 * Roberts cross: x = P(x, y) - P(x + 1, y - 1), y = P(x, y - 1) - P(x + 1, y); of a magnitude of
 * 256 and more the low 8 bits are stored. The first stored row and the last column keep their
 * values. For both, the width in the row length too is the 32 bits at its information header
 * position.
 *
 * @param dib      the image
 * @param size     one of ::OmbPageSize, where it counts
 * @param passes   of convolutions: how often
 * @param strength the share of a convolution in tenths, as in omb_DoConvoluteDIB()
 * @param mode     one of ::OmbEdge; further arguments are accepted and have no effect
 * @return 1; 0 for null, other modes and sizes, rows that overlap, and when memory runs out
 */
OMB_API int32_t omb_EdgePage(PackedDib* dib, int32_t size, int32_t passes, int32_t strength,
                             int32_t mode, ...);

/** @} */

/** @defgroup quantize Color quantization
 * Palettes learned from the image by a self-organising network of 2, 4, 16 or 256 neurons (A. H.
 * Dekker, "Kohonen neural networks for optimal colour quantization", 1994) in integer arithmetic.
 * The rows of the 24-bit image, padding included, are sampled as one stream of bytes, round and
 * round: length / 30 colors, at steps of 3 x 499 bytes (491, 487, 503 where it is a multiple
 * of all before), in cycles of a hundredth of the samples each (at least one). A color maps to the
 * entry with the least sum of absolute differences.
 * @{ */

/**
 * Reduces an image to a learned palette, or expands an indexed image to 24 bits.
 *
 * An indexed image is replaced by its 24-bit copy first (biClrUsed and biClrImportant 0, padding 0;
 * beyond a short color table, colors are the bytes that follow it). For 24 bits that is all. For 1,
 * 4 and 8 bits the network learns 2, 16 or 256 colors, which become the color table (biClrUsed
 * their number, biClrImportant 0), and every pixel is mapped to it. All other header fields keep
 * their values.
 *
 * @param image the image, replaced; 1, 4, 8 or 24 bits
 * @param bits  bits per pixel of the result: 1, 4, 8 or 24
 * @return 1; 0 for null, for an image that has this depth already or has 16, 32 or other bits, for
 *         other values of `bits` and when memory runs out. In the last two cases an indexed image
 *         may have been replaced by its 24-bit copy; otherwise it is unchanged.
 */
OMB_API int32_t omb_neuquant(PackedDib** image, int32_t bits);

/**
 * Reduces a 24-bit image to a learned palette and spreads the error of each pixel: 3/8 to its right
 * neighbour, 3/8 to the pixel of the same column in the row stored before (the one below it in the
 * picture), 1/4 to the right neighbour of that one. Each share is added and truncated toward 0.
 *
 * Rows are taken in storage order, pixels from left to right. The row stored before has its palette
 * colors already; the shares it gets change the entries that it is mapped to in the end. The last
 * pixel of a row receives no share from its left neighbour. Colors are limited to 0..255 before
 * each search. The result's biClrUsed and biClrImportant are 0.
 *
 * At 1 and 2 bits indices are stored as nibbles, high nibble first, at the row length of 1 or 2
 * bits: each row overwrites what runs over from the one before. The block is large enough for the
 * last one, larger than its header says. The table of 2 bits has 4 entries behind the header and
 * the rows behind it, although header queries know no table at that depth. After a core header
 * errors are taken to the colors that four-byte entries at byte 40 of the block would have.
 *
 * @param image the image, replaced; 24 bits
 * @param bits  bits per pixel of the result: 1, 2, 4 or 8
 * @return 1; 0 for null, other depths of the image or the result, and when memory runs out
 */
OMB_API int32_t omb_dither(PackedDib** image, int32_t bits);

/** @} */

/** @defgroup gdi Windows bitmaps and windows
 * These exist in Windows builds alone. Handles are Windows' own: HBITMAP is `struct HBITMAP__*`,
 * and so on, so that this header does without Windows' headers. The system's gdi32 and user32 are
 * loaded by the first call; where there is no desktop, the result is 0.
 * @{ */

#if defined(_WIN32)

struct HBITMAP__;
struct HPALETTE__;
struct HWND__;

/**
 * Copies a device bitmap to a new image with an information header: 1 bit for device bitmaps of
 * 1 bit per pixel, 4 bits for up to 4, 8 bits for up to 8, otherwise 24. The colors of the table
 * are those that GetDIBits() gives; biSizeImage is the size of the rows.
 *
 * For a short time a bitmap of more than 8 bits takes 64 MiB more than the image.
 *
 * @param bitmap  an HBITMAP, not selected into a device context
 * @param palette an HPALETTE that gives meaning to the pixels of palette devices; null for the
 *                default palette
 * @return the address of the new image, which the caller releases; 0 for null, for what is no
 *         bitmap, when GetDIBits() fails (the block it was given stays allocated then) and when
 *         memory runs out
 */
OMB_API uintptr_t omb_bmtodib(struct HBITMAP__* bitmap, struct HPALETTE__* palette);

/**
 * Makes a DIB section of an image: a bitmap that GDI draws, with the image's header and pixels. At
 * up to 8 bits it gets the full 2, 16 or 256 colors from behind the header, whatever biClrUsed
 * says; what lies past the block counts as black.
 *
 * Of every row, as many bytes count as planes x width x bits per pixel give; with 1 plane, as it
 * should be, that is all of them.
 *
 * @param dib an image with an information header, of any depth that CreateDIBSection() takes
 * @return an HBITMAP, which the caller deletes with DeleteObject(); null for null, for a core
 *         header, for an image without pixels and when the section cannot be created
 */
OMB_API struct HBITMAP__* omb_DIBToDIBSection(const PackedDib* dib);

/** Parts of a window, for omb_CopyWindowToDIB(). */
enum OmbWindowPart {
  OMB_WINDOW_WHOLE = 1, /**< with its frame */
  OMB_WINDOW_CLIENT = 2 /**< the client area */
};

/**
 * Copies what is on the screen where a window is to a new image, as omb_bmtodib() makes it. Parts
 * outside the screen are cut off: a window half to the left of it gives its right half.
 *
 * @param window   an HWND
 * @param selector 1 for the whole window, 2 for its client area
 * @return the address of the new image, which the caller releases; 0 for null, other selectors, a
 *         rectangle that is empty or not on the screen, and when memory runs out
 */
OMB_API uintptr_t omb_CopyWindowToDIB(struct HWND__* window, uint16_t selector);

#endif /* _WIN32 */

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* OMBRILO_OMBRILO_H_ */
