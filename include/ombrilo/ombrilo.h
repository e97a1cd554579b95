/**
 * @file ombrilo.h
 * @brief Ombrilo: image processing on packed device-independent bitmaps.
 *
 * Plain C functions on images in memory. The library reads no files, keeps no settings, starts no
 * threads and holds no state between calls: every call may run on any thread as long as no two
 * calls share an image.
 *
 * What is written here is exact: whoever computes it anew gets the same bytes. Each function says
 * first what it is for and what it takes; "Limits" is what to know about large or unusual images.
 * Drawings and examples are in docs/pictures.md.
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
 *   green, red; 1- and 4-bit pixels fill a byte from its high bits.
 *
 * A width or a height below 1 means that there are no pixels. The compression and image size fields
 * are not consulted unless a function says so.
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
 * one and store the new address. Functions that return an image hand it to the caller. What a
 * function does not write in a new block, row padding included, is 0.
 *
 * @section rules Rules for unusual images
 *
 * Images as files hold them (information header, 1 plane, full color table, less than 65,536
 * columns and rows) need none of these.
 *
 * @anchor nearest
 * @par The nearest entry
 * Where a computed color becomes the pixel of an image of 1, 4 or 8 bits, that is the entry with
 * the least squared distance over red, green and blue, the lowest index on a tie. The entries are
 * always 2, 16 or 256: a shorter color table continues in the bytes that follow it, the pixels.
 * They are read once, before anything changes, unless a function says otherwise.
 *
 * @anchor byte40
 * @par Colors at byte 40
 * Some functions read colors four bytes apart from byte 40 of the image, whatever its header: for
 * an information header that is the color table, for a core header it is not.
 *
 * @anchor sizes16
 * @par Sizes of 16 bits
 * Some functions take only the low 16 bits of width and height (65,546 columns count as 10). What
 * they do to an image with 65,536 columns or rows is defined, but of no use.
 *
 * @anchor planes
 * @par Row length with planes
 * Some functions take rows to be ((bit count x planes x width + 31) / 32) x 4 bytes long, in signed
 * 32-bit arithmetic, with bit count and planes at their information header positions (bytes 14 and
 * 12) even after a core header. Bytes outside the image count as 0 and are not written.
 */
#ifndef OMBRILO_OMBRILO_H_
#define OMBRILO_OMBRILO_H_

#include <stdint.h>

#define OMB_VERSION_MAJOR 1 /**< major version of this header, part of the library's file name */
#define OMB_VERSION_MINOR 0 /**< minor version of this header */
#define OMB_VERSION_PATCH 0 /**< patch level of this header */

/** Marks what the library exports. */
#if defined(_WIN32)
#define OMB_API
#else
#define OMB_API __attribute__((visibility("default")))
#endif

/** The calling convention: that of C, whatever the compiler's options make the usual one. */
#if defined(_WIN32) && !defined(_WIN64)
#define OMB_CDECL __cdecl
#else
#define OMB_CDECL
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

/** A point of a tone curve. */
typedef struct {
  int32_t x; /**< input level, 0 to 255 */
  int32_t y; /**< output level, 0 to 255 */
} OmbPoint;

/**
 * The version of the library that was loaded, which need not be that of the header:
 * major << 16 | minor << 8 | patch.
 */
OMB_API uint32_t OMB_CDECL omb_version(void);

/** @defgroup memory Creating and releasing images
 * For hosts whose language has no malloc() of the library's C runtime. @{ */

/**
 * Creates an image with an information header, 1 plane and all pixels 0.
 *
 * Images of 1, 4 and 8 bits get a full color table that holds a gray ramp from black to white
 * (entry i of n: i x 255 / (n - 1)) and a biClrUsed of 0.
 *
 * @param width    pixels per row, 1 or more
 * @param height   rows, 1 or more
 * @param bitCount bits per pixel: 1, 4, 8, 16, 24 or 32
 * @return the image, released with omb_freedib() or free(); null for other values, for blocks of
 *         2 GiB and more, and when memory runs out
 */
OMB_API PackedDib* OMB_CDECL omb_newdib(int32_t width, int32_t height, uint16_t bitCount);

/** Releases an image with the C runtime's free(). Null is accepted. */
OMB_API void OMB_CDECL omb_freedib(PackedDib* dib);

/** @} */

/** @defgroup queries Header queries
 * Each reads the header of an image of any depth and checks nothing but the pointer: null gives 0.
 * @{ */

/** Width in pixels as stored: a negative biWidth appears as a number above 2^31. */
OMB_API uint32_t OMB_CDECL omb_DIBWidth(const PackedDib* dib);

/** Height in rows as stored: a negative biHeight appears as a number above 2^31. */
OMB_API uint32_t OMB_CDECL omb_DIBHeight(const PackedDib* dib);

/** Bits per pixel as stored. */
OMB_API uint16_t OMB_CDECL omb_DIBBitCount(const PackedDib* dib);

/**
 * Number of color table entries: biClrUsed with all 32 bits when an information header has one,
 * otherwise 2, 16, 256 for 1, 4 and 8 bits and 0 for other depths.
 */
OMB_API uint32_t OMB_CDECL omb_DIBNumColors(const PackedDib* dib);

/**
 * Size of the color table in bytes: 4 (information header) or 3 (core header) times the number of
 * entries.
 *
 * @par Limits
 * - It is computed in 16 bits: for a biClrUsed of 16,384 and more it does not agree with
 *   omb_DIBNumColors().
 */
OMB_API uint16_t OMB_CDECL omb_PaletteSize(const PackedDib* dib);

/** First byte of the pixel rows: the image's address + size field + omb_PaletteSize(). */
OMB_API uint8_t* OMB_CDECL omb_FindDIBBits(const PackedDib* dib);

/**
 * Bytes per row of an image with an information header and 1 plane.
 *
 * It is ((planes x bits per pixel x width + 31) / 32) x 4 in signed 32-bit arithmetic. Unlike the
 * row length that most operations use, it includes the planes field.
 *
 * @par Limits
 * - The fields are read at their information header positions whatever the size field says, so the
 *   number means nothing for a core header.
 */
OMB_API int32_t OMB_CDECL omb_BytesPerLine(const PackedDib* dib);

/** @} */

/** @defgroup bridge Pixels of the host
 * Between the pixel arrays of hosts and images: rows from the top of the picture down, packed as
 * ::OmbPixels says, without a header.
 *
 * `pixels` is the first byte of the picture's top row. The row below starts `stride` bytes later; a
 * negative stride leads to lower addresses, so that a bottom-up array is passed by the address of
 * its last row. A row's own bytes must not be more than the stride's absolute value; bytes between
 * rows are neither read nor written.
 * @{ */

/** Layouts of pixel arrays. Alpha is straight: colors are not multiplied by it. */
enum OmbPixels {
  OMB_PIXELS_BIT = 1,   /**< 1 bit, the leftmost pixel in a byte's highest bit; 0 black, 1 white */
  OMB_PIXELS_GRAY = 8,  /**< 1 byte: gray from 0, black, to 255, white */
  OMB_PIXELS_BGR = 24,  /**< 3 bytes: blue, green, red */
  OMB_PIXELS_RGB = 25,  /**< 3 bytes: red, green, blue */
  OMB_PIXELS_BGRA = 32, /**< 4 bytes: blue, green, red, alpha */
  OMB_PIXELS_RGBA = 33  /**< 4 bytes: red, green, blue, alpha */
};

/**
 * Makes an image of an array of pixels.
 *
 * ::OMB_PIXELS_BIT gives an image of 1 bit with the colors black and white, ::OMB_PIXELS_GRAY one
 * of 8 bits with a ramp from black to white, all others one of 24 bits. The header is that of
 * omb_newdib(); row padding is 0. For an image of other colors than grays pass its indices as
 * ::OMB_PIXELS_BIT or ::OMB_PIXELS_GRAY and call omb_setpalette().
 *
 * A pixel of alpha a is laid over the background: each channel becomes
 * (c x a + background x (255 - a) + 127) / 255, truncated.
 *
 * @param format     an ::OmbPixels
 * @param width      pixels per row, 1 or more
 * @param height     rows, 1 or more
 * @param pixels     first byte of the top row
 * @param stride     bytes from a row to the one below it
 * @param background 0x00BBGGRR; only formats with alpha have a use for it
 * @return the image, released with omb_freedib() or free(); null for a null array, another format,
 *         a size below 1, a stride that is shorter than a row, blocks of 2 GiB and more, and when
 *         memory runs out
 */
OMB_API PackedDib* OMB_CDECL omb_frompixels(uint32_t format, int32_t width, int32_t height,
                                            const void* pixels, intptr_t stride,
                                            uint32_t background);

/**
 * Writes an image's pixels to an array of omb_DIBWidth() x omb_DIBHeight() pixels.
 *
 * Pixels of 1, 4 and 8 bits are looked up in the color table, 16 and 32 bits give the colors that
 * omb_transformat() gives. Gray is that of omb_gray(): (11 blue + 59 green + 30 red) / 100,
 * truncated. A bit is 1 where this gray is 128 or more; bits after the last pixel of a row are 0.
 * Alpha is 255.
 *
 * @param dib    the image; 1, 4, 8, 16, 24 or 32 bits
 * @param format an ::OmbPixels
 * @param pixels first byte of the top row
 * @param stride bytes from a row to the one below it
 * @return 1; 0, with the array untouched, for null, other depths and formats, an image without
 *         pixels, and a stride that is shorter than a row. Takes no memory
 */
OMB_API uint32_t OMB_CDECL omb_topixels(const PackedDib* dib, uint32_t format, void* pixels,
                                        intptr_t stride);

/**
 * Replaces the first entries of the color table, at any depth that has one. Pixels stay as they
 * are.
 *
 * @param dib    the image
 * @param colors blue, green, red and an ignored byte per entry; reserved bytes become 0
 * @param count  how many entries; the others stay
 * @return 1; 0 for null and for more entries than the table has
 */
OMB_API uint32_t OMB_CDECL omb_setpalette(PackedDib* dib, const uint8_t* colors, uint32_t count);

/**
 * Stores the resolution, in pixels per metre: 11811 is 300 dpi. 0 means unknown.
 *
 * @param dib the image, of any depth
 * @param x   horizontally, 0 or more
 * @param y   vertically, 0 or more
 * @return 1; 0 for null, for negative numbers and for a core header, which has no place for it
 */
OMB_API uint32_t OMB_CDECL omb_setresolution(PackedDib* dib, int32_t x, int32_t y);

/** @} */

/** @defgroup image Whole images
 * @{ */

/**
 * Photographic negative: every blue, green and red becomes 255 minus itself.
 *
 * @param dib the image, changed in place: the color table at 1, 4 and 8 bits, the pixels at 24
 * @return 1; 0 for null and for other depths
 *
 * Reserved bytes and row padding stay.
 */
OMB_API uint32_t OMB_CDECL omb_invert(PackedDib* dib);

/**
 * Creates a logical palette from the color table, entry by entry, with all flags 0.
 *
 * @param dib the image, of any depth
 * @return On Windows an HPALETTE, which the caller deletes with DeleteObject(). Elsewhere the
 *         address of a LOGPALETTE structure (16-bit version 0x300, 16-bit number of entries, then
 *         red, green, blue and flags per entry), which the caller releases with free(). 0 for null,
 *         for an image without colors and when the palette cannot be created.
 *
 * It has as many entries as the low 16 bits of omb_DIBNumColors() say.
 */
OMB_API uintptr_t OMB_CDECL omb_CreateDIBPalette(const PackedDib* dib);

/**
 * Brings a 16- or 32-bit image to 24 bits, so that every other function takes it.
 *
 * @param image the image, replaced
 * @return 1; also 1, with the image unchanged, at 1, 4, 8 and 24 bits. 0 for null, for other depths
 *         and when memory runs out
 *
 * - Channels are red 0x7C00, green 0x03E0, blue 0x001F (16 bits) or red 0xFF0000, green 0xFF00,
 *   blue 0xFF (32 bits). When biCompression is 3 (BI_BITFIELDS), the three 32-bit masks after the
 *   40-byte header replace them, in the order red, green, blue; they do not move the pixel rows,
 *   which start where omb_FindDIBBits() says.
 * - A channel becomes (pixel AND mask), shifted down by the number of 0 bits below the mask,
 *   shifted up by 8 - (number of 1 bits in the mask) modulo 32, of which the low 8 bits are taken.
 *   Missing low bits are 0, so that a 5-bit 31 becomes 248, and a mask of more than 8 bits gives 0.
 * - The new header is the old one's first 40 bytes with biBitCount 24, biCompression 0 and
 *   biSizeImage 0. A biClrUsed stays, with a zeroed color table of that size.
 *
 * @par Limits
 * - Core headers: these fields are written at their information header positions, so that the bit
 *   count field keeps its value.
 */
OMB_API uint32_t OMB_CDECL omb_transformat(PackedDib** image);

/**
 * Cuts the image down to a rectangle; pixels and color table are copied exactly.
 *
 * @param image     the image, replaced; 1, 4, 8 or 24 bits
 * @param rectangle the part to keep, all four edges inclusive, inside the image
 * @return 1; 0 for null, other depths, a rectangle that is empty or leaves the image, and when
 *         memory runs out
 *
 * The header keeps everything but the size, biSizeImage too.
 */
OMB_API uint32_t OMB_CDECL omb_crop(PackedDib** image, const OmbRect* rectangle);

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
OMB_API uintptr_t OMB_CDECL omb_cpydibrect(const PackedDib* dib, int32_t x, uint32_t y, uint32_t w,
                                           uint32_t h);

/** @} */

/**
 * @defgroup tone Tone and color
 *
 * Operations on single colors: brighter, grayer, with more contrast, black and white.
 *
 * - "The table" is the color table as far as the header announces entries; reserved bytes keep
 *   their values unless said otherwise.
 * - Operations that change 24-bit pixels leave row padding alone. One without rows is done at once.
 * - The gray weights and roundings of these functions differ from each other; each is part of its
 *   function's contract.
 *
 * @anchor bytewise
 * @par Table or bytes
 * omb_gammacorrection() and omb_adjustghms() change the table of an image that has one, whatever
 * its depth (the low 16 bits of the number of entries are not 0), and keep the pixels. Otherwise
 * they change the pixel bytes, three to a pixel: width x 3 bytes, then (row length - width x bit
 * count / 8) bytes are skipped, and so on, as often as there are rows but not beyond the last one's
 * end. At 24 bits these are the pixels. At 16 and 32 bits that is of no use: call omb_transformat()
 * first.
 *
 * @anchor levels
 * @par Low and high level
 * Of a channel's histogram, the low level is the first value with more than trunc(samples x low)
 * samples at or below it, or 0 if there is none. The high level is the last value with at most
 * trunc(samples x high) samples at or below it, or 255 if there is none. Products are taken in
 * double precision. A fraction that is not a number gives 0 and 255.
 * @{
 */

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
 * Whether the color table holds a color that is not gray.
 *
 * @return 1 for a colorful image, 0 for a table that is all gray and for null
 *
 * The pixels are not looked at: an image without a table counts as colorful.
 */
OMB_API int32_t OMB_CDECL omb_iscolorful(const PackedDib* dib);

/** Whether there is any color to remove: omb_iscolorful(). */
OMB_API int32_t OMB_CDECL omb_can_gray(const PackedDib* dib);

/** Whether the sheet filter takes the depth: 1 at 8 and 24 bits, otherwise and for null 0. */
OMB_API int32_t OMB_CDECL omb_can_filtersheet(const PackedDib* dib);

/** Whether omb_pseudocolor() takes the image: 1 for a table that is all gray, otherwise and for
 * null 0. */
OMB_API int32_t OMB_CDECL omb_can_pseudocolor(const PackedDib* dib);

/**
 * Whether color balance takes the depth: 0 at 1 and 4 bits and for null, otherwise 1. At 16 and 32
 * bits omb_balance() needs omb_transformat() first.
 */
OMB_API int32_t OMB_CDECL omb_can_balance(const PackedDib* dib);

/** Whether automatic color is on offer: always 1. */
OMB_API int32_t OMB_CDECL omb_autoclr(void);

/**
 * Counts how often each value of one channel occurs among the pixels.
 *
 * @param dib      the image; 1, 4, 8 or 24 bits; #OMB_CHANNEL_GRAY changes it
 * @param counters 256 counters, cleared first
 * @param channel  1 to 4 of ::OmbChannel: red, green, blue, gray
 * @return 1; 0 for null, with the counters untouched, and for other depths, with the counters
 *         cleared
 * @see @ref tone
 *
 * The gray value is (59 green + 11 blue + 30 red) / 100, truncated. Counting it also makes the
 * image gray: the table entries that pixels use, or the 24-bit pixels. That is done pixel by pixel,
 * so that where a short table continues in the pixels, each sees what those before it wrote.
 *
 * @par Limits
 * - Width and height are @ref sizes16 "sizes of 16 bits", and rows are as far apart as the cut
 *   width says (without planes).
 * - Another channel gives 0 at 1 bit when there is a pixel, and otherwise 1 with all counters 0.
 */
OMB_API int32_t OMB_CDECL omb_getchannelhistogram(PackedDib* dib, int32_t* counters,
                                                  int32_t channel);

/**
 * Brightness, then contrast, each channel by itself.
 *
 * @param dib        the image; the table at 1, 4 and 8 bits, the pixels at 24; others stay
 *                   unchanged
 * @param brightness -255 to 255 make sense; 0 skips the step
 * @param contrast   -127 to 127 make sense; 0 skips the step
 * @return always 1
 * @see @ref tone
 *
 * - Brightness d: v becomes v + d, limited to 0..255.
 * - Contrast c above 0: 0 for v up to c, 255 for v above 255 - c, between them
 *   (v - c) x 255 / (255 - 2c), truncated.
 * - Contrast c below 0: v x (255 + 2c) / 255 - c, truncated in the division.
 *
 * @par Limits
 * - Contrast of 128 and more is a hard threshold: 0 for v up to c, 255 above it; from 255 on all is
 *   0.
 * - Contrast below -127 takes the low 8 bits of the result. The product wraps in signed 32 bits.
 */
OMB_API uint32_t OMB_CDECL omb_brightnesscontrast(PackedDib* dib, int32_t brightness,
                                                  int32_t contrast);

/**
 * Gamma correction: below 1 makes the middle lighter, above 1 darker.
 *
 * @param dib   the image: its table or its pixels, see @ref bytewise "table or bytes"
 * @param gamma the exponent
 * @return 1; 0 for null and for a gamma within 1e-8 of 1, with nothing done
 *
 * v becomes pow(v, gamma) / (pow(255, gamma) / 255) + 0.5 in double precision, truncated and
 * limited to 0..255; what is not a number becomes 0.
 *
 * @par Limits
 * - A 24-bit image with a color table of its own has only that changed.
 * - At the end of the data, bytes of an incomplete pixel are changed, too.
 */
OMB_API uint32_t OMB_CDECL omb_gammacorrection(PackedDib* dib, double gamma);

/**
 * Stretches each channel between the levels of its own histogram: removes a color cast.
 *
 * @param dib  the image; 1, 4, 8 or 24 bits
 * @param low  fraction of the samples to cut at the dark end, say 0.005; not limited
 * @param high fraction of the samples below the bright end, say 0.995; not limited
 * @return 1; 0 for null and for other depths
 * @see @ref tone
 *
 * The samples are the pixels at 24 bits and the table's entries, each once, at 1, 4 and 8 bits;
 * those are what changes, too. With the @ref levels "low and high level" L and H, v becomes 0 below
 * L, else 255 above H, else itself where L = H, else (v - L) x 255 / (H - L), truncated.
 */
OMB_API uint32_t OMB_CDECL omb_autolevel(PackedDib* dib, double low, double high);

/**
 * Stretches all channels between one pair of levels: keeps the hues.
 *
 * @param dib  the image; 1, 4, 8 or 24 bits
 * @param low  fraction of the samples to cut at the dark end, say 0.005; not limited
 * @param high fraction of the samples below the bright end, say 0.995; not limited
 * @return 1; 0 for null, for other depths, for an indexed image with L = H, and when memory runs
 *         out
 * @see @ref tone
 *
 * L is the lowest and H the highest of the three channels' @ref levels "levels"; values change as
 * in omb_autolevel().
 *
 * - 24 bits: the pixels are counted and changed.
 * - 1, 4 and 8 bits: the colors of the pixels are counted; H takes fewer than (instead of at most)
 *   trunc(samples x high) samples; each pixel gets the @ref nearest "nearest entry" of its
 *   stretched color, and the table stays.
 *
 * @par Limits
 * - At 1 bit only the first stored row is counted, while the number of samples is still that of all
 *   pixels, so that such an image usually stays as it is.
 * - Core headers: the colors of pixels are those @ref byte40 "at byte 40", and those that lie over
 *   the pixels change with them, pixel by pixel in storage order. The nearest entry is one of the
 *   proper table.
 * - The number of samples is width x height in signed 32 bits that wrap.
 */
OMB_API uint32_t OMB_CDECL omb_autocontrast(PackedDib* dib, double low, double high);

/**
 * Turns the image gray: (11 blue + 59 green + 30 red) / 100, truncated.
 *
 * @param image the image; 1, 4 and 8 bits: its table changes, in place; 24 bits: it is replaced by
 *              an 8-bit image
 * @return 1; 0 for null, for other depths and when memory runs out
 * @see @ref tone
 *
 * The 8-bit image has a table that is a ramp from black to white, reserved bytes 0, and the gray
 * values as its pixels. Its header is the old one with bit count 8 and, in an information header,
 * biClrUsed and biClrImportant 0. A negative height gives a block without rows.
 */
OMB_API uint32_t OMB_CDECL omb_gray(PackedDib** image);

/**
 * Shows gray levels as colors: replaces the table of an image whose table is all gray.
 *
 * @param dib   the image, of any depth
 * @param table blue, green, red and an ignored byte per entry, as many entries as the image's table
 * @return 1; 0 for null and for an image that omb_iscolorful() calls colorful
 * @see @ref tone
 *
 * Reserved bytes in the image become 0.
 */
OMB_API uint32_t OMB_CDECL omb_pseudocolor(PackedDib* dib, const uint8_t* table);

/**
 * Proposes a threshold for omb_binary(): the median of the pixels' gray values.
 *
 * @param dib the image; 1, 4, 8 or 24 bits
 * @return 0 to 255; 0 also for null, for other depths, and without pixels
 * @see @ref tone
 *
 * Gray values are 0.3 red + 0.59 green + 0.11 blue, added in this order in double precision,
 * truncated. With half = pixels / 2, truncated, the result is
 *
 * - 0 where more than half of the pixels have level 0;
 * - otherwise the first level i with more than `half` pixels at or below it,
 * - or i - 1 where the number of pixels at or below that is nearer to `half`; a tie gives i.
 *
 * @par Limits
 * - The number of pixels is width x height in signed 32 bits that wrap.
 */
OMB_API int32_t OMB_CDECL omb_autothreshold(const PackedDib* dib);

/**
 * Replaces the image by a 1-bit one: white where a pixel's gray value exceeds the threshold, black
 * where it is below.
 *
 * @param image     the image, replaced; 1, 4, 8 or 24 bits
 * @param threshold 0 to 255; other numbers make all of it white or black. omb_autothreshold()
 *                  proposes one
 * @return 1; 0 for null, for other depths and when memory runs out
 * @see @ref tone
 *
 * 59 green + 30 red + 11 blue is compared with 100 x threshold, exactly. Equal ones are black for
 * thresholds up to 128 (for a 1-bit source up to 127), white above.
 *
 * - 4, 8 and 24 bits: index 1 is white, index 0 black; the table is black, white.
 * - 1 bit: the pixels stay, and the table's colors become black or white. First all announced
 *   entries of the table do; then the bytes after the header, as many as a table of two entries and
 *   the rows take, are copied as they are.
 * - The new header is the old one with bit count 1 and, in an information header, biClrUsed 2 and
 *   biClrImportant 0. A negative height gives a block without rows.
 *
 * @par Limits
 * - Core headers: at 4 and 8 bits colors are read @ref byte40 "at byte 40".
 * - 1 bit: rows of an image whose table does not have two entries come displaced.
 */
OMB_API uint32_t OMB_CDECL omb_binary(PackedDib** image, int32_t threshold);

/**
 * Sets one channel to 0.
 *
 * @param dib     the image; the table at 1, 4 and 8 bits, the pixels at 24
 * @param channel 1 to 3 of ::OmbChannel: red, green, blue
 * @return 1; 0 for null, other depths and other channels
 * @see @ref tone
 */
OMB_API uint32_t OMB_CDECL omb_filtercolor(PackedDib* dib, uint32_t channel);

/**
 * Keeps one channel.
 *
 * @param image   the image; 1, 4 and 8 bits: the table's two other channels become 0, in place;
 *                24 bits: it is replaced by an 8-bit image
 * @param channel 1 to 3 of ::OmbChannel: red, green, blue
 * @return 1 at 1, 4 and 8 bits. 0 in every other case, also when a 24-bit image has been replaced:
 *         its bit count is 8 then
 * @see @ref tone
 *
 * The 8-bit image has the channel's values as its pixels and a table that is a ramp of that channel
 * alone; its header is as with omb_gray().
 */
OMB_API uint32_t OMB_CDECL omb_extractcolor(PackedDib** image, uint32_t channel);

/**
 * Makes the very light and the very dark colors lighter or darker.
 *
 * @param dib        the image: its table or its pixels, see @ref bytewise "table or bytes"
 * @param highlights amount for the highlights, -255 to 255
 * @param shadows1   first amount for the shadows, -255 to 255
 * @param shadows2   second amount for the shadows, -255 to 255
 * @return 0 when all amounts are 0, otherwise 1, also for null
 *
 * There are three steps: highlights (blue + green + red above 510), shadows (sum below 255), and
 * shadows again, as the step before left them. A step adds its amount to green and red, limited to
 * 0..255, and makes blue the new green plus the amount, limited likewise; an amount of 0 skips the
 * step.
 *
 * @par Limits
 * - A 24-bit image with a color table of its own has only that changed.
 * - At the end of the data, bytes that do not fill a group of three stay.
 */
OMB_API uint32_t OMB_CDECL omb_adjustghms(PackedDib* dib, int32_t highlights, int32_t shadows1,
                                          int32_t shadows2);

/**
 * Computes the smooth tone curve through points, for hosts that draw it.
 *
 * It goes through every point, never swings beyond neighbouring ones and keeps straight lines
 * straight. omb_curve() applies it to an image.
 *
 * @param points the points; x ascends strictly, x and y are 0 to 255
 * @param count  number of points, 1 to 256
 * @param curve  256 bytes: the output level of each input level
 * @return 1; 0 for null and for other points or counts, with the curve as it was
 * @see @ref tone
 *
 * The pieces are monotone cubics (M. Steffen, "A simple method for monotonic interpolation in one
 * dimension", Astronomy and Astrophysics 239, 1990), in double precision, each operation rounded by
 * itself. From point i to point i + 1, h(i) and d(i) are the differences of x and of y, and s(i) is
 * d(i) / h(i). The slope m at a point is
 *
 * - between two segments, a to its left and b to its right: 0 unless d(a) d(b) is above 0; else
 *   (d(a) h(b)^2 + d(b) h(a)^2) / (h(a) h(b) (h(a) + h(b))), limited to +-2 min(|s(a)|, |s(b)|);
 * - at an end, a its segment and b the one next to that:
 *   (d(a) h(b) (2 h(a) + h(b)) - d(b) h(a)^2) / (h(a) h(b) (h(a) + h(b))), limited to +-2 |s(a)|;
 *   0 unless its product with d(a) is above 0;
 * - of two points alone: s(0) at both.
 *
 * Numerators and denominators are whole numbers, divided once. A level v between two points becomes
 * the sum, from left to right, of y(i), d(i) t / h(i), t (h(i) - t) B / h(i)^2 and 0.5, truncated
 * and limited to 0..255, with t = v - x(i) and
 * B = (m(i) - s(i)) (h(i) - t) - (m(i + 1) - s(i)) t. Levels up to the first point take its y,
 * levels from the last one on take that one's.
 */
OMB_API uint32_t OMB_CDECL omb_bestfit(const OmbPoint* points, uint32_t count, uint8_t* curve);

/**
 * Sends each level through the smooth curve of omb_bestfit().
 *
 * @param dib     the image: its table at 1, 4 and 8 bits, its pixels at 24
 * @param points  the points, as omb_bestfit() takes them
 * @param count   number of points, 1 to 256
 * @param channel 0 to 3 of ::OmbChannel: all, red, green, blue
 * @return 1; 0 for null, for other depths, points, counts and channels
 * @see @ref tone
 *
 * With a table that is all gray (omb_iscolorful()) every channel means all, so that it stays gray.
 */
OMB_API uint32_t OMB_CDECL omb_curve(PackedDib* dib, const OmbPoint* points, uint32_t count,
                                     uint32_t channel);

/**
 * Sends each level through straight lines from point to point. Two points set input and output
 * levels at once.
 *
 * @param dib     the image, as omb_curve() takes it
 * @param points  the points, as omb_bestfit() takes them
 * @param count   number of points, 1 to 256
 * @param channel the channel, as omb_curve() takes it
 * @return 1; 0 for null, for other depths, points, counts and channels
 * @see @ref tone
 *
 * A level v from x0 to x1 becomes (2 (y0 h + (v - x0) (y1 - y0)) + h) / (2 h), truncated, with
 * h = x1 - x0: the nearest whole number, halves up. Levels before the first and after the last
 * point take their y.
 */
OMB_API uint32_t OMB_CDECL omb_segmentoperation(PackedDib* dib, const OmbPoint* points,
                                                uint32_t count, uint32_t channel);

/**
 * Sets black and white to two input levels: what a host calls when the sliders under a histogram
 * have moved, each time on an untouched copy of the image.
 *
 * @param dib     the image, as omb_curve() takes it
 * @param x1      the level that becomes black, 0 to 255
 * @param x2      the level that becomes white, 0 to 255
 * @param channel the channel, as omb_curve() takes it
 * @return 1; 0 for null, for other depths, levels and channels
 * @see @ref tone
 *
 * - x1 below x2: levels up to x1 become 0, levels from x2 on 255, a level v between them
 *   (510 (v - x1) + d) / (2 d), truncated, with d = x2 - x1.
 * - x1 above x2: 255 minus what (x2, x1) gives, a negative.
 * - x1 = x2: levels below become 0, the others 255.
 */
OMB_API uint32_t OMB_CDECL omb_x1x2_changed(PackedDib* dib, int32_t x1, int32_t x2,
                                            uint32_t channel);

/**
 * Changes colors by channel, or by hue, saturation and intensity or lightness. When a, b and c are
 * 0, nothing changes.
 *
 * | mode | changes                          | a       | b       | c       |
 * |------|----------------------------------|---------|---------|---------|
 * | 1    | channels by amounts, -255 to 255 | red     | green   | blue    |
 * | 2    | channels by percent, -100 to 900 | red     | green   | blue    |
 * | 3    | hue, saturation, intensity (HSI) | degrees | percent | percent |
 * | 4    | hue, saturation, lightness (HSL) | degrees | percent | percent |
 *
 * Intensity is the mean of the channels, lightness that of the greatest and the least one. Modes 3
 * and 4 turn the hue by -360 to 360 degrees and take -100 to 100 percent. No color is added to
 * grays.
 *
 * @param dib  the image: its table at 1, 4 and 8 bits, its pixels at 24
 * @param mode one of ::OmbAdjustment: 1 to 4
 * @param a    red or degrees
 * @param b    green or saturation
 * @param c    blue, intensity or lightness
 * @return 1; 0 for null, for other depths and modes and for numbers out of range
 * @see @ref tone
 *
 * Mode 1: v becomes v + amount, limited to 0..255. Mode 2: v (100 + percent) / 100, truncated, at
 * most 255.
 *
 * Modes 3 and 4 change the saturation first; then the color is mixed with white or black. In mode 3
 * the intensity stays until then, and saturation gives way where a channel would exceed 255. Hue is
 * the place on the hexagon red, yellow, green, cyan, blue, magenta. R, G, B, their greatest M and
 * their least m are whole numbers, and so are sums and differences of these. All else is in single
 * precision, from left to right, each operation rounded by itself.
 *
 * 1. If M = m, low, mid and high are m, and k is 0; 5 comes next.
 * 2. h = (G - B) / (M - m) if M = R, else (B - R) / (M - m) + 2 if M = G, else
 *    (R - G) / (M - m) + 4; + 6 if that is below 0. Then h + a / 60; + 6 if that is below 0; - 6 if
 *    that is 6 or more. k is h truncated, f = h - k; x = f for an even k, 1 - f for an odd one.
 * 3. Mode 3: i = (R + G + B) / 3; s = 1 - m / i; s' = min(1, s * (100 + b) / 100);
 *    c' = min(3 * i * s' / (1 + x), 3 * (255 - i) / (2 - x)); low = i - c' * (1 + x) / 3.
 *    Mode 4: w = 255 - |M + m - 255|; s = (M - m) / w; s' = min(1, s * (100 + b) / 100);
 *    c' = w * s'; low = (M + m) / 2 - c' / 2.
 * 4. mid = low + c' * x; high = low + c'.
 * 5. Each v of these three becomes v + (255 - v) * c / 100 if c is above 0, else
 *    v * (100 + c) / 100; then + 0.5, truncated toward 0, limited to 0..255.
 * 6. Red, green, blue are, for k from 0 to 5: high mid low; mid high low; low high mid; low mid
 *    high; mid low high; high low mid.
 */
OMB_API uint32_t OMB_CDECL omb_adjustcolor(PackedDib* dib, uint32_t mode, int32_t a, int32_t b,
                                           int32_t c);

/**
 * Color balance: moves dark, middle or light colors from cyan to red, from magenta to green and
 * from yellow to blue. When all amounts are 0, nothing changes.
 *
 * @param dib       the image; 8 or 24 bits
 * @param red       -100 (cyan) to 100 (red)
 * @param green     -100 (magenta) to 100 (green)
 * @param blue      -100 (yellow) to 100 (blue)
 * @param range     one of ::OmbBalanceRange: 0 to 3
 * @param keepLight whether each color keeps its luminance: 0 or any other number
 * @return 1; 0 for null, for other depths, amounts and ranges and, at 8 bits, when memory runs out
 * @see @ref tone
 *
 * A channel value v becomes v + amount * w / 255, truncated toward 0 in the division and limited to
 * 0..255. w is 255 - 2v, at least 0, for shadows; 2v - 255, at least 0, for highlights; for
 * midtones 255 less both of these; and 255 for all levels.
 *
 * The luminance of a color is (299 red + 587 green + 114 blue + 500) / 1000. To keep it, what the
 * new color lacks to the old one's, Y, is added to each channel. If the least channel, n, is below
 * 0 then, each v becomes Y + (v - Y) * Y / (Y - n); else, if the greatest, x, is above 255,
 * Y + (v - Y) * (255 - Y) / (x - Y). All of this in whole numbers, truncated toward 0.
 *
 * @par Limits
 * - 8 bits: the table stays, and each pixel gets the @ref nearest "nearest entry" to its balanced
 *   color. An image whose table is a gray ramp therefore stays gray, and only its lightness can
 *   change; bring it to 24 bits for colors.
 * - 16 and 32 bits, for which omb_can_balance() answers 1, need omb_transformat() first.
 */
OMB_API uint32_t OMB_CDECL omb_balance(PackedDib* dib, int32_t red, int32_t green, int32_t blue,
                                       uint32_t range, uint32_t keepLight);

/** @} */

/**
 * @defgroup geometry Scale, rotate, flip
 *
 * For sizes that look right, call omb_resize(). omb_scale() and omb_rotate() resample more simply:
 * positions, weights and sums are single precision, in the order written here, each operation
 * rounded by itself.
 *
 * @anchor resampling
 * @par Resampling
 * A pixel of the new image has a position (sx, sy) in the source of W columns and H rows, in
 * columns from the left and rows from the bottom. With ix, iy their truncations, dx = sx - ix and
 * dy = sy - iy, the mode selects
 *
 * - 1, point: source pixel (ix, iy), its index or color as it is.
 * - 2, bilinear: (1-dy)(1-dx) of (ix, iy) + (1-dy)dx of (ix+1, iy) + (1-dx)dy of (ix, iy+1) + dx dy
 *   of (ix+1, iy+1), per channel. An ix above W-2 becomes W-2 and an iy above H-2 becomes H-2, with
 *   dx and dy as they are.
 * - 3, bicubic: 4 x 4 pixels at the offsets -1, 0, 1, 2. Each row's pixels are summed with the
 *   weights C(1+dx), C(dx), C(1-dx), C(2-dx), then the four sums with the same weights of dy. With
 *   a = |t|, b = a a and c = b a, C(t) is 1 - 2b + c for a below 1, 4 - 8a + 5b - c below 2 and 0
 *   beyond.
 *
 * Sums are added from left to right. Offsets of mode 3 derive from the coordinate x or y in the new
 * image and the source's last column or row L:
 *
 * - -1 is 0 where x is 0;
 * - 1 is 0 where x + 1 > L;
 * - 2 is the offset before it where x + 2 > L, except for columns at 24 bits, whose last two
 *   offsets are 0 and 1 there.
 *
 * Samples of mode 3 are taken row by row; one that leaves the source first moves ix or iy, for
 * itself and all samples after it: iy to H-1-offset or -offset, ix to W-1-ix or -offset.
 *
 * What still lies outside the source is clamped into it. Channel sums are limited to 0..255 and
 * truncated. At 1, 4 and 8 bits modes 2 and 3 blend colors and store the @ref nearest "nearest
 * entry".
 * @{
 */

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
 * Scales the image.
 *
 * @param image  the image, replaced; 1, 4, 8 or 24 bits
 * @param width  new width in pixels; 0 gives an image without pixels
 * @param height new height in rows; likewise
 * @param mode   one of ::OmbResampling: 1 point, 2 bilinear, 3 bicubic
 * @return 1; 0 for null, for the size that the image has, for a size of 2 GiB and more and when
 *         memory runs out
 * @see @ref resampling
 *
 * The position of pixel (x, y) is x * (W / width), y * (H / height): there is no half-pixel offset.
 * The color table and biSizeImage stay.
 *
 * @par Limits
 * - No antialiasing: halving takes every second pixel, whatever the mode, so that stripes a pixel
 *   wide become all black. Use omb_resize().
 * - Bilinear enlarging repeats the way between the last two pixels: 0 255 becomes
 *   0 63 127 191 0 63 127 191. Use omb_resize().
 * - Bicubic enlarging has all its neighbours only in the first W - 2 columns and H - 2 rows of the
 *   new image; beyond them it is near to copying pixels. Reducing brings the color of the left edge
 *   into the last column. Use omb_resize().
 * - An image of another depth, without pixels, or scaled in another mode becomes one of the new
 *   size with all pixels 0.
 * - Core headers: the width is stored in 32 bits over both size fields, so that the header's height
 *   becomes 0 for widths up to 65,535; the rows are complete.
 */
OMB_API uint32_t OMB_CDECL omb_scale(PackedDib** image, uint32_t width, uint32_t height,
                                     uint32_t mode);

/**
 * Brings the image to another size so that it looks right: reduced images show no jagged edges or
 * moire, enlarged ones no blocks.
 *
 * @param image  the image, replaced; 1, 4, 8 or 24 bits
 * @param width  new width in pixels, 1 to 32,767
 * @param height new height in rows, 1 to 32,767
 * @param filter one of ::OmbResizeFilter: 1 box, 2 triangle, 3 cubic, 4 Lanczos
 * @return 1; also 1, with the image unchanged, when it has no columns or rows. 0 for null, for
 *         other sizes, filters and depths, for a result of 2 GiB and more and when memory runs out
 * @see @ref geometry
 *
 * Box averages whole pixels and is the filter for a fast overview; cubic and Lanczos are sharper,
 * Lanczos most so, with faint rings at hard edges. The size that the image has is done as well: the
 * depth may change.
 *
 * - 24 bits stay 24 bits.
 * - Images of 1, 4 or 8 bits whose table is all gray become 8-bit images with a ramp from black to
 *   white, so that a page of 1 bit stays readable when it shrinks; other indexed images become 24
 *   bits. The colors of pixels are those of 2, 16 or 256 entries by depth, as with omb_scale(); an
 *   index beyond a short gray table counts as (299 red + 587 green + 114 blue + 500) / 1000 of what
 *   is there.
 * - The header is the old one with the new size and bit count and, in an information header,
 *   biClrUsed and biClrImportant 0; all else is kept, biSizeImage and the resolution too.
 *
 * @par The filters
 * These are the bytes that Pillow's Image.resize() gives with BOX, BILINEAR, BICUBIC and LANCZOS.
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
 * - box: r is 0.5, F is 1 for -0.5 < x <= 0.5, else 0;
 * - triangle: r is 1, F is 1 - a below 1, else 0;
 * - cubic: r is 2, F is (1.5 a - 2.5) a a + 1 below 1, -0.5 (((a - 5) a + 8) a - 4) below 2, else
 *   0;
 * - Lanczos: r is 3, F is sinc(x) sinc(x / 3) for -3 <= x < 3, else 0.
 *
 * sinc(x) is sin(pi x) / (x pi), and 1 at 0. There sin(pi x) is, with j the whole number nearest to
 * x (halves away from 0), t = (x - j) * pi and z = t t, t times the series 1/1! - z/3! + z^2/5! ...
 * + z^10/21! (from the last term on: sum = term + z * sum), and the negative of that for odd j.
 *
 * @par Limits
 * - Beside the new image, memory is taken for the weights, for the source rows in reach of a new
 *   row and up to 64 more, at the new width,
 *   and for 1,024 source pixels of 64 rows, or those of one new pixel if these are more.
 */
OMB_API uint32_t OMB_CDECL omb_resize(PackedDib** image, uint32_t width, uint32_t height,
                                      uint32_t filter);

/**
 * Turns the image about its center; positive angles turn clockwise.
 *
 * @param image   the image, replaced; 1, 4, 8 or 24 bits
 * @param degrees the angle
 * @param mode    one of ::OmbResampling: 1 point, 2 bilinear, 3 bicubic
 * @return 1; 0 for null, for an angle that reduces to less than 0.01 either way, one that is not
 *         finite or outside 32-bit integers, for other depths or a negative size at a right angle,
 *         for a size of 2 GiB and more and when memory runs out
 * @see @ref resampling
 *
 * - The angle is reduced by full turns and keeps its sign: 360 x (the truncated angle / 360,
 *   truncated) is taken away in single precision.
 * - 90, 180 and 270 degrees, less than 0.01 away, move pixels exactly, whatever the mode; row
 *   padding is 0.
 * - Every other angle r, negative right angles included, resamples. With c and s the cosine and
 *   sine of r / 180 * 3.1415926, computed in double precision and rounded to single, the new width
 *   is max(|Wc - Hs|, |Wc + Hs|) + 0.5 and the new height max(|Hc - Ws|, |Hc + Ws|) + 0.5,
 *   truncated.
 * - The position of pixel (x, y), y from the bottom, is uc + vs + W/2, us - vc + H/2 with
 *   u = x - width/2 and v = height/2 - y, where halves are whole numbers.
 * - Pixels whose truncated position is outside the source are background: all bits 1, which is
 *   white at 24 bits and the highest index otherwise; so is row padding.
 *
 * The color table and biSizeImage stay.
 *
 * @par Limits
 * - The background of indexed images has the color of the last entry, whatever that is.
 * - When resampling, an image of another depth, without pixels or in another mode becomes
 *   background throughout.
 * - Core headers keep the low 16 bits of the new size; the rows are complete.
 */
OMB_API uint32_t OMB_CDECL omb_rotate(PackedDib** image, float degrees, uint32_t mode);

/**
 * Mirrors the image left to right, in place.
 *
 * @param dib the image; 1, 4, 8 or 24 bits
 * @return 1; 0 for null and for other depths
 *
 * Row padding stays.
 */
OMB_API uint32_t OMB_CDECL omb_fliphor(PackedDib* dib);

/**
 * Mirrors the image top to bottom, in place.
 *
 * @param dib the image, of any depth
 * @return 1; 0 for null
 *
 * Row padding moves with its row.
 */
OMB_API uint32_t OMB_CDECL omb_flipvert(PackedDib* dib);

/** @} */

/**
 * @defgroup kernels Kernels
 * A kernel is a set of neighbours with weights; a structuring element, or shape, is one whose
 * weights are not used. omb_DoConvoluteDIB() and omb_DoKernalMorphDIB() take either.
 * @{
 */

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
OMB_API KERNAL* OMB_CDECL omb_newKERNAL(int32_t width, int32_t height, int32_t anchorX,
                                        int32_t anchorY, int32_t count, int32_t bias,
                                        const char* name);

/** Copies a record, arrays included. Null gives null, and so do a negative count and running out of
 * memory. */
OMB_API KERNAL* OMB_CDECL omb_cloneKERNAL(const KERNAL* kernel);

/**
 * Sets every field of a record to 0, pointers included, and releases nothing: for records that the
 * caller provides, before they own anything. Null is accepted.
 */
OMB_API void OMB_CDECL omb_zeroKERNAL(KERNAL* kernel);

/** Releases a record of omb_newKERNAL() or omb_cloneKERNAL() with its arrays. Null is accepted. */
OMB_API void OMB_CDECL omb_destroyKERNAL(KERNAL* kernel);

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
OMB_API const KERNAL* OMB_CDECL omb_getKERNAL(uint32_t index);

/** @} */

/**
 * @defgroup filters Neighbourhood filters
 *
 * Smoothing, sharpening, edges and relief on pictures. Each result depends on the image as it was
 * before the call.
 *
 * - 24 bits: each channel by itself.
 * - 1, 4 and 8 bits: pixels count as colors, and a result becomes the @ref nearest "nearest entry".
 * - A border of the image becomes zero bytes (black, or index 0), and so does the padding of rows.
 *   An image that is all border becomes zero throughout.
 *
 * omb_DoConvoluteDIB() differs: it takes the bytes of an 8-bit image as values and keeps what it
 * does not compute. omb_diffuse() and omb_granulate() have no border, keep the padding and refuse
 * other depths. When memory runs out, the image stays as it was.
 * @{
 */

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
 * @param dib  the image; 1, 4, 8 or 24 bits
 * @param type one of ::OmbConvolution: 1 to 39; other numbers leave the image unchanged
 * @see @ref filters
 *
 * Each channel becomes the sum of its weighted neighbours, divided by the sum of the weights unless
 * that is 0, truncated toward zero and clamped to 0..255. A border becomes zero: 2 pixels for the
 * 5x5 kernels 2, 4 and 8, 1 pixel for the others.
 *
 * @par Limits
 * - Images of 16, 32 or other bits are erased: all their rows become 0. Call omb_transformat()
 *   first.
 */
OMB_API void OMB_CDECL omb_convolute(PackedDib* dib, uint32_t type);

/**
 * Convolution with any kernel, one or more times: smooths, sharpens or finds edges in gray pages
 * and photographs.
 *
 * @param dib      the image; 8 bits (the bytes are the levels) or 24 bits (each channel); other
 *                 depths do not change
 * @param kernel   a built-in record or one of your own
 * @param passes   how often; 0 or less leaves the image unchanged. Each pass takes as long as the
 *                 first; after one that changes no byte there are no more
 * @param strength the share of the result in tenths: 10 is all of it, more overshoots
 * @return 1; 0 for null, for a record with an entry outside the extent that it describes, for rows
 *         that do not fit (see Limits) and when memory runs out
 * @see @ref kernels
 *
 * A result is the sum of weighted neighbours, divided by the sum of the weights unless that is 0
 * (truncated toward zero); then, unless strength is 10, (result - p) x strength / 10 + p for the
 * pixel's own value p (truncated toward zero); then plus bias; then clamped to 0..255. All of this
 * in 32-bit arithmetic that wraps. Pixels for which the kernel's extent leaves the image keep their
 * value, and so does row padding.
 *
 * @par Limits
 * - 8 bits: pixels count, not their colors. Bring images with a table of colors to 24 bits first,
 *   with omb_neuquant().
 * - 24-bit images wider than 21,844 pixels and 8-bit images wider than 65,532 are refused with 0;
 *   see the next point for 65,536 and more.
 * - Width and height are @ref sizes16 "sizes of 16 bits", and so is the @ref planes "row length
 *   with planes", whose width is the 32 bits at its information header position. Rows that are
 *   shorter than their pixels or leave a signed 32-bit byte count are refused.
 * - An image without planes (or with 0 as the bit count at byte 14) does not change: 1.
 * - A record is refused for its entries alone, before depth, passes and rows are looked at. Odd
 *   anchors and sizes are no reason by themselves, and a count of 0 or less makes all sums 0.
 */
OMB_API int32_t OMB_CDECL omb_DoConvoluteDIB(PackedDib* dib, const KERNAL* kernel, int32_t passes,
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
 * @param dib       the image; 1, 4, 8 or 24 bits
 * @param direction one of ::OmbEmboss: 0 to 27
 * @param color     0x00BBGGRR; 0x808080 is the usual ground
 * @return 1; 0 for null, for other directions and when memory runs out
 * @see @ref filters
 *
 * Each channel becomes the sum of its neighbours, weighted as omb_convolute()'s kernel
 * 12 + direction says, plus the color's channel, clamped to 0..255. These kernels sum to 0, so that
 * flat areas take the color. A border of 1 pixel becomes zero.
 *
 * @par Limits
 * - Images of 16, 32 or other bits are erased: all their rows become 0, and the result is 1.
 */
OMB_API uint32_t OMB_CDECL omb_emboss(PackedDib* dib, uint32_t direction, uint32_t color);

/**
 * Edges, bright on black.
 *
 * @param dib the image; 1, 4, 8 or 24 bits
 * @see @ref filters
 *
 * For each channel a third (truncated) of the strongest of four differences in the 3x3
 * neighbourhood: the row stored before against the row after, the column left against the column
 * right, and each of two corners with its two neighbours against the opposite ones. A border of 1
 * pixel becomes zero.
 *
 * @par Limits
 * - Images of 16, 32 or other bits are erased: all their rows become 0.
 */
OMB_API void OMB_CDECL omb_sobel(PackedDib* dib);

/**
 * Removes specks and noise: the median, channel by channel, of nine pixels that form a plus.
 *
 * @param dib the image; 1, 4, 8 or 24 bits
 * @see @ref filters
 *
 * The nine are the pixel itself and the two next to it in each of the four directions. A border of
 * 3 pixels becomes zero, although the plus reaches 2.
 *
 * @par Limits
 * - Images of 16, 32 or other bits are erased: all their rows become 0.
 */
OMB_API void OMB_CDECL omb_medianblur(PackedDib* dib);

/**
 * Frosted glass: each pixel becomes a random one of the pixels around it. No two pictures are the
 * same.
 *
 * @param dib  the image; 1, 4, 8 or 24 bits
 * @param area as omb_diffuse_seed() takes it
 * @return as that of omb_diffuse_seed()
 *
 * This is omb_diffuse_seed() with a seed from the clock; the random numbers of the C library are
 * not touched.
 */
OMB_API uint32_t OMB_CDECL omb_diffuse(PackedDib* dib, uint32_t area);

/**
 * Frosted glass that can be repeated: the same seed gives the same picture.
 *
 * @param dib  the image; 1, 4, 8 or 24 bits
 * @param area number of pixels to choose from: 9 is a square of 3x3, 25 one of 5x5. 2 to the square
 *             of the width
 * @param seed any number
 * @return 1, also without rows; 0 for null, for other depths and areas (any area with a width below
 *         2) and when memory runs out
 *
 * With side = the smallest whole number whose square is at least `area`, before = (side - 1) / 2
 * and a random number r from 0 to area - 1, the pixel at column x of the stored row y becomes the
 * one that was at column x + r mod side - before of the stored row y + r / side - before, divisions
 * truncated; outside the image that is the nearest pixel in it. An even side reaches one pixel
 * further to the right and up. Pixels are copied as they are; row padding stays.
 *
 * Random numbers depend on the place alone (S. Vigna's SplitMix64), in 64 bits that wrap:
 * z = seed + (y * width + x + 1) * 0x9E3779B97F4A7C15, then
 * z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9, then z = (z ^ z >> 27) * 0x94D049BB133111EB, then
 * z = z ^ z >> 31; r = ((z >> 32) * area) >> 32.
 *
 * Memory: the rows in reach, `side` at most, and no more than the image has; a byte for each pixel
 * at 1, 4 and 8 bits. 2 GiB of them are refused.
 */
OMB_API uint32_t OMB_CDECL omb_diffuse_seed(PackedDib* dib, uint32_t area, uint64_t seed);

/**
 * Mosaic: every pixel becomes the mean of its block.
 *
 * @param dib    the image; 1, 4, 8 or 24 bits
 * @param width  columns of a block; more than the image has are all of them
 * @param height rows of a block; likewise
 * @return 1, also without pixels; 0 for null, for other depths, for a width or height of 0 and when
 *         memory runs out
 *
 * Blocks are laid out from the top left corner of the picture; at its right and bottom edges they
 * are as large as there is room. The mean of each channel is (sum + n / 2) / n, truncated, with n
 * the number of the block's own pixels. At 1, 4 and 8 bits the mean of the colors becomes the
 * @ref nearest "nearest entry", also for blocks of one pixel. Row padding stays.
 *
 * Memory: a few rows. The image is read once and written once.
 */
OMB_API uint32_t OMB_CDECL omb_granulate(PackedDib* dib, uint32_t width, uint32_t height);

/** @} */

/**
 * @defgroup morphology Morphology
 *
 * Growing and shrinking shapes, and what is made of that: removing specks, finding outlines.
 *
 * - 24 bits: each channel by itself.
 * - 1, 4 and 8 bits: pixels count as colors, and a result becomes the @ref nearest "nearest entry".
 *   Only omb_DoKernalMorphDIB() takes the bytes of an 8-bit image as values.
 * - Other depths do not change, and nothing changes when memory runs out. Row padding keeps its
 *   bytes.
 *
 * @anchor steps
 * @par Steps
 * Functions that do one thing after the other do each as if it were called alone. With a color
 * table shorter than the depth, each step therefore takes its entries from the pixels that the one
 * before left.
 *
 * @anchor cut
 * @par Sums and differences
 * omb_pickedge(), omb_opencompose() and omb_tophat() combine the result of a step with another
 * image pixel by pixel, with width and height as @ref sizes16 "sizes of 16 bits" and rows as far
 * apart as the cut width says (without planes). Below 65,536 columns and rows that is the whole
 * image.
 * @{
 */

/**
 * Dilation: light areas grow.
 *
 * @param dib the image; 1, 4, 8 or 24 bits
 * @see @ref morphology
 *
 * Each channel becomes the maximum over the 3x3 pixels at columns x - 2 to x and stored rows y - 2
 * to y. Light detail therefore moves toward higher columns and stored rows, one pixel to the right
 * and up; omb_erode() moves it back. Positions outside the image are those of the nearest pixel
 * inside.
 */
OMB_API void OMB_CDECL omb_dilate(PackedDib* dib);

/**
 * Erosion: dark areas grow.
 *
 * @param dib the image; 1, 4, 8 or 24 bits
 * @see @ref morphology
 *
 * Each channel becomes the minimum over the 3x3 pixels at columns x to x + 2 and stored rows y to
 * y + 2; otherwise as omb_dilate().
 */
OMB_API void OMB_CDECL omb_erode(PackedDib* dib);

/**
 * Opening: removes light detail smaller than 3x3. An erosion, then a dilation.
 *
 * @param dib the image; 1, 4, 8 or 24 bits
 * @see @ref steps
 */
OMB_API void OMB_CDECL omb_mathopen(PackedDib* dib);

/**
 * Closing: removes dark detail smaller than 3x3. A dilation, then an erosion.
 *
 * @param dib the image; 1, 4, 8 or 24 bits
 * @see @ref steps
 */
OMB_API void OMB_CDECL omb_mathclose(PackedDib* dib);

/**
 * Removes light and dark detail smaller than 3x3: an opening, then a closing.
 *
 * @param dib the image; 1, 4, 8 or 24 bits
 * @see @ref steps
 */
OMB_API void OMB_CDECL omb_denoise(PackedDib* dib);

/**
 * Inner edges: the image minus its erosion, channel by channel.
 *
 * @param dib the image; 1, 4, 8 or 24 bits
 * @see @ref morphology
 *
 * At 8 and 24 bits a difference stops at 0; at 1 and 4 bits, where the nearest entry may be lighter
 * than the minimum, it is taken modulo 256. Its nearest entry is sought in the table as the erosion
 * left it.
 *
 * @par Limits
 * - @ref cut "Sizes of 16 bits": pixels that are not reached keep the erosion; the rest of each row
 *   that is reached gets back what it held before the call.
 */
OMB_API void OMB_CDECL omb_pickedge(PackedDib* dib);

/**
 * The dilation, exactly as omb_dilate(), under another name.
 *
 * @param dib the image; 1, 4, 8 or 24 bits
 */
OMB_API void OMB_CDECL omb_gradientize(PackedDib* dib);

/**
 * Lightens and softens: the opening plus the erosion, channel by channel, at most 255.
 *
 * @param dib the image; 24 bits, others do not change
 * @see @ref steps
 *
 * @par Limits
 * - @ref cut "Sizes of 16 bits": pixels that are not reached keep the opening.
 */
OMB_API void OMB_CDECL omb_opencompose(PackedDib* dib);

/**
 * Light detail smaller than 3x3, on black: the image minus its opening, channel by channel, at
 * least 0.
 *
 * @param dib the image; 24 bits, others do not change
 * @see @ref steps
 *
 * @par Limits
 * - @ref cut "Sizes of 16 bits": pixels that are not reached keep the opening.
 */
OMB_API void OMB_CDECL omb_tophat(PackedDib* dib);

/** Operations of omb_DoKernalMorphDIB(). */
enum OmbMorphology {
  OMB_MORPH_ERODE = 0,  /**< the least value: dark areas grow */
  OMB_MORPH_DILATE = 1, /**< the greatest value: light areas grow */
  OMB_MORPH_OPEN = 2,   /**< erosion, then dilation: light detail goes */
  OMB_MORPH_CLOSE = 3   /**< dilation, then erosion: dark detail goes */
};

/**
 * Erosion, dilation, opening or closing with any structuring element.
 *
 * @param dib        the image
 * @param bits       8: one value per byte; 24: three channels per pixel. Pass the image's bit count
 * @param op         one of ::OmbMorphology: 0 erode, 1 dilate, 2 open, 3 close
 * @param element    only its count and offsets matter; count 0 or less changes nothing
 * @param iterations how often erosion or dilation is repeated; an opening or closing repeats its
 *                   first step that often, then its second, and each ends early after a pass that
 *                   changes no byte. 0 or less leaves the image unchanged
 * @return 1; 0 for null, other bits and ops, rows that do not fit (see Limits), no planes, and when
 *         memory runs out
 * @see @ref kernels
 *
 * An erosion is the minimum, a dilation the maximum, over the pixels at the element's offsets;
 * offsets that leave the image are skipped. A channel whose minimum is 255 (maximum is 0) keeps its
 * value. Row padding stays.
 *
 * @par Limits
 * - 8 bits: pixels count, not their colors. Bring images with a table of colors to 24 bits first,
 *   with omb_neuquant().
 * - `bits` is believed; the image's own bit count only decides how long a row is.
 * - 24-bit images wider than 21,844 pixels and 8-bit images wider than 65,532 are refused with 0;
 *   see the next point for 65,536 and more.
 * - Width and height are @ref sizes16 "sizes of 16 bits", and so is the @ref planes "row length
 *   with planes" that follows from the cut width. Rows that are shorter than their pixels or leave
 *   a signed 32-bit byte count are refused.
 */
OMB_API int32_t OMB_CDECL omb_DoKernalMorphDIB(PackedDib* dib, int32_t bits, int32_t op,
                                               const KERNAL* element, int32_t iterations);

/** @} */

/**
 * @defgroup page Page processing
 * Filters for scanned pages, in place. They take the bytes of 8-bit images as levels: right for
 * gray pages, wrong for indices into a table of colors; bring such images to 24 bits with
 * omb_neuquant().
 *
 * "lopass" and the like are the names of omb_getKERNAL()'s records, with which these functions call
 * omb_DoConvoluteDIB(): its depths, formula and limits hold.
 * @{
 */

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

/** Operations of omb_MorphologicalPage(). */
enum OmbPageMorphology {
  OMB_PAGE_ERODE = 0,    /**< eroded: ink grows */
  OMB_PAGE_DILATE = 1,   /**< dilated: ink shrinks */
  OMB_PAGE_OPEN = 2,     /**< opened: light specks and gaps go */
  OMB_PAGE_CLOSE = 3,    /**< closed: dark specks and thin lines go */
  OMB_PAGE_GRADIENT = 4, /**< dilated - eroded: edges */
  OMB_PAGE_LIGHT = 5,    /**< image - opened: what is light and thin */
  OMB_PAGE_DARK = 6,     /**< closed - image: what is dark and thin, as light on black */
  OMB_PAGE_CLEAN = 7     /**< image / closed: a clean background */
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
 * Smooths, sharpens or cleans a page.
 *
 * | mode                      | filter, for a size of 0, 1, 2                          |
 * |---------------------------|--------------------------------------------------------|
 * | 0, #OMB_ENHANCE_LOPASS    | omb_DoConvoluteDIB() with "lopass" 3x3, 5x5, 7x7       |
 * | 1, #OMB_ENHANCE_HIPASS    | the same with "hipass" 3x3, 5x5, 7x7                   |
 * | 2, #OMB_ENHANCE_GAUSS     | the same with "gauss" 3x3, 5x5, 7x7                    |
 * | 3, #OMB_ENHANCE_HIGAUSS   | the same with "higauss" 5x5, 7x7, 9x9                  |
 * | 4, #OMB_ENHANCE_TONE      | a tone curve; as mode 5 unless toneScope is 0 or 1     |
 * | 5, #OMB_ENHANCE_UNSHARP   | the same with "unsharp" 3x3, 5x5, 7x7                  |
 * | 7, #OMB_ENHANCE_MEDIAN    | rank order in 3x3, 5x5, 7x7 at percentile 50           |
 * | 8, #OMB_ENHANCE_RANK      | rank order in 3x3, 5x5, 7x7 at any percentile          |
 *
 * @param dib        the image; 8 or 24 bits, rank order also others
 * @param size       one of ::OmbPageSize: 0 to 2
 * @param passes     how often, ending early after a pass that changes no byte; below 1 the image is
 *                   unchanged. Tone: percent of the effect
 * @param strength   the share of a convolution in tenths, as in omb_DoConvoluteDIB(). Tone: what
 *                   the curve cuts off
 * @param block      of tone by blocks: their width and height, 16 to 32,767 pixels
 * @param percentile of mode 8: 0 (the least value) to 100 (the greatest)
 * @param mode       one of ::OmbEnhancement
 * @param toneScope  of mode 4: one of ::OmbToneScope
 * @param toneCurve  of mode 4 with a scope of 0 or 1: one of ::OmbToneCurve
 * @return 1; 0 for null, other modes, sizes, percentiles, blocks and curves, rows that do not fit
 *         (see Limits), and when memory runs out
 * @see @ref page
 *
 * Rank order: with n the number of pixels in the square, a value becomes the one at index
 * (n - 1) x percentile / 100, truncated, of the square's sorted values. 24 bits: blue, green and
 * red apart. Other depths: bytes, whatever they hold, as many columns as the image is wide but not
 * more than a row has bytes. A band of 1, 2 or 3 pixels (the half of the square) and the padding
 * keep their values.
 *
 * Tone: 8 and 24 bits; other depths are refused. With toneScope #OMB_SCOPE_BLOCKS, equalizing is
 * contrast-limited adaptive equalization, and whitening evens out the light of a photographed page;
 * blocks of a fifteenth to an eighth of the page suit both. The arguments are checked first; then a
 * `passes` below 1 and an image without columns or rows leave all as it is, with 1.
 *
 * - The level v of a pixel is its byte at 8 bits, whatever the color table says, and at 24 bits
 *   (299 red + 587 green + 114 blue + 500) / 1000. It becomes
 *   g(v) = v + (f(v) - v) * min(passes, 100) / 100. All numbers are whole; divisions truncate
 *   toward 0, and counts have 64 bits.
 * - 24 bits: blue, green and red are moved by g(v) - v each. If the least of them, n, is below 0
 *   then, each becomes g + (c - g) * g / (g - n), with g for g(v); if not and the greatest, m, is
 *   above 255, each becomes g + (c - g) * (255 - g) / (m - g). So hues stay.
 * - f comes from the number N of levels and the number h(v) of each of them.
 *   line(a, b) is 0 up to a, 255 from b on and (510 (v - a) + d) / (2 d), d = b - a, between them;
 *   with a >= b it is v.
 * - Curve #OMB_TONE_EQUALIZE: with a strength above 0, no h(v) counts more than
 *   L = max(1, N * strength / 25600), and E is the sum of what is cut off; otherwise E is 0. With
 *   c(v) the sum of what counts up to v, + E * (v + 1) / 256, and z the first c(v) above 0, f is
 *   ((c(v) - z) * 255 + (N - z) / 2) / (N - z), and 0 where c(v) is 0. If z is N, there is one
 * level and f is v. The strength is a limit in percent of the mean h; 200 to 400 are usual in
 * blocks.
 * - Curve #OMB_TONE_STRETCH: with q = N * max(strength, 0) / 1000, lo is the first level with more
 *   than q at or below it and hi the last one with more than q at or above it; 256 and -1 where
 *   there is none. f is line(lo, hi), in blocks line(min(lo, hi / 2), hi).
 * - Curve #OMB_TONE_WHITEN: paper is the level v, from the mean (the sum of v * h(v)) / N on, with
 *   the most levels from v - k to v + k, the lighter one on a tie; k is max(size, 0), in blocks 2.
 *   f is line(min(lo, paper / 2), paper - paper / 8), with lo as above.
 * - Curve #OMB_TONE_LOGARITHM: f is 0 up to 50, then 163.3133 * ln(v / 50.0) + 0.5, truncated and
 *   at most 255; in blocks this of min(255, v * 255 / paper) instead of v. No value is nearer than
 *   0.003 to a whole number, so that any logarithm will do.
 * - Blocks: with b for `block`, there are max(1, (width + b / 2) / b) columns of blocks, and rows
 *   likewise; they begin at the first stored pixel, and the last ones take the rest. Histograms are
 *   those before the call. A block's paper is at least max(1, P / 4), where P is the paper of the
 *   whole image with k = 2. For column x of pixels let t = 2 x + 1 - b. Below 0, the first column
 *   of blocks counts alone; where a = t / (2 b) is the last one or beyond, that one does; otherwise
 *   columns a and a + 1 count, the second one with the weight w = t mod (2 b) * 128 / b and the
 * first with 256 - w (alone: 256). For stored rows likewise. The new level is (the sum of g(v) of
 * the four blocks times both weights, + 32768) / 65536.
 *
 * Memory for blocks: two rows of their curves, and 6 bytes for each block.
 *
 * @par Limits
 * - Convolutions: those of omb_DoConvoluteDIB().
 * - Tone has none: width, height and bit count are the header's own, and planes do not count.
 * - Rank order: 24-bit images wider than 21,844 pixels are refused with 0, 8-bit images wider than
 *   65,532 do not change (1); see the next point for 65,536 and more.
 * - Rank order: width and height are @ref sizes16 "sizes of 16 bits", and so is the @ref planes
 *   "row length with planes" that follows from the cut width. Rows that are shorter than their
 *   pixels or leave a signed 32-bit byte count are refused. An image without planes (or with 0 as
 *   the bit count at byte 14) does not change: 1.
 */
OMB_API int32_t OMB_CDECL omb_EnhancePage(PackedDib* dib, int32_t size, int32_t passes,
                                          int32_t strength, int32_t block, int32_t percentile,
                                          int32_t mode, int32_t toneScope, int32_t toneCurve);

/**
 * Finds edges of a page.
 *
 * | mode                      | filter, for a size of 0, 1, 2                          |
 * |---------------------------|--------------------------------------------------------|
 * | 0, #OMB_EDGE_SOBEL        | Sobel gradient magnitude (any size)                    |
 * | 1, #OMB_EDGE_ROBERTS      | Roberts cross gradient magnitude (any size)            |
 * | 2, #OMB_EDGE_SCULPT       | omb_DoConvoluteDIB() with "sculpt " (any size)         |
 * | 3, #OMB_EDGE_LAPLACE      | the same with "laplace" 3x3, 5x5, 7x7                  |
 * | 5, #OMB_EDGE_HORIZONTAL   | the same with "horzedge" 3x3, 5x5, 7x7                 |
 * | 6, #OMB_EDGE_VERTICAL     | the same with "vertedge" 3x3, 5x5, 7x7                 |
 *
 * @param dib      the image; 8 or 24 bits, others do not change
 * @param size     one of ::OmbPageSize, where it counts
 * @param passes   of convolutions: how often; below 1 they change nothing
 * @param strength the share of a convolution in tenths, as in omb_DoConvoluteDIB()
 * @param mode     one of ::OmbEdge; further arguments are accepted and have no effect
 * @return 1; 0 for null, other modes and sizes, rows that do not fit (see Limits), and when memory
 *         runs out
 * @see @ref page
 *
 * Magnitudes are sqrt(x^2 + y^2), truncated, of bytes at 8 bits and of blue, green and red apart at
 * 24 bits. Rows count as they are stored.
 *
 * - Sobel: x and y are the differences between columns and rows of the 3x3 square with weights
 *   1, 2, 1; the magnitude is limited to 255. A frame of one pixel keeps its values.
 * - Roberts cross: x = P(x, y) - P(x + 1, y - 1), y = P(x, y - 1) - P(x + 1, y); of a magnitude of
 *   256 and more the low 8 bits are stored. The first stored row and the last column keep their
 *   values.
 *
 * @par Limits
 * - Convolutions: those of omb_DoConvoluteDIB().
 * - Sobel, Roberts: the @ref planes "row length with planes", its width the 32 bits at its
 *   information header position. A row length below 0, and rows that are shorter than their pixels
 *   or leave a signed 32-bit byte count, are refused. An image without planes (or with 0 as the bit
 *   count at byte 14), or too small to have a pixel that changes, stays as it is: 1.
 */
OMB_API int32_t OMB_CDECL omb_EdgePage(PackedDib* dib, int32_t size, int32_t passes,
                                       int32_t strength, int32_t mode, ...);

/**
 * Grows, shrinks or takes away ink and specks by their width, or cleans an unevenly lit background.
 *
 * @param dib        the image; 8 or 24 bits
 * @param size       one of ::OmbPageSize: 0, 1 or 2 for shapes of 3, 5 or 7 pixels
 * @param shape      one of ::OmbPageShape: 0 to 3
 * @param iterations how often; below 1 the image is unchanged
 * @param mode       one of ::OmbPageMorphology: 0 to 7
 * @return 1; 0 for null, other depths, sizes, shapes and modes, whatever the iterations, and when
 *         memory runs out
 * @see @ref page
 *
 * The shape is a square, a circle (of 3 pixels a square; of 5 and 7 the records "Circle 5x5" and
 * "Circle 7x7"), a row or a column. An erosion is the minimum, a dilation the maximum over the
 * pixels of the shape: of bytes at 8 bits, whatever the color table says, and of blue, green and
 * red apart at 24. Pixels outside the image are skipped. Erosions and dilations are repeated
 * `iterations` times; an opening is all erosions, then all dilations, a closing the other way
 * round.
 *
 * Mode 7 takes the closed image for the light on the paper: with b = max(closed, 64), a value
 * becomes (255 * value + b / 2) / b, both divisions truncated. Light is a factor, so that paper
 * becomes white, and ink is as dark in a shadow as outside it. The shape, over all iterations, must
 * be wider than strokes are; what is wider counts as paper, but below 64 as ink.
 *
 * Modes 0 to 3 are those of omb_DoKernalMorphDIB(), except that width, height and row length are
 * the image's own: they are not cut to 16 bits, and planes do not count. Row padding keeps its
 * bytes. An image without columns or rows stays as it is: 1.
 *
 * Memory is taken for the rows in reach. With n iterations and 3, 5 or 7 pixels these are n, 2 n or
 * 3 n on either side (of a row of pixels none), but not more than the image has.
 */
OMB_API int32_t OMB_CDECL omb_MorphologicalPage(PackedDib* dib, int32_t size, int32_t shape,
                                                int32_t iterations, int32_t mode);

/** @} */

/**
 * @defgroup quantize Color quantization
 * Palettes learned from the image by a self-organising network of n = 2, 4, 16 or 256 neurons (A.
 * H. Dekker, "Kohonen neural networks for optimal colour quantization", 1994). All numbers are
 * whole; divisions truncate toward zero. Results are repeatable.
 *
 * @anchor network
 * @par The network
 * - Samples: the rows of the 24-bit image, padding included, are one stream of `length` bytes, of
 *   which length / 30 samples are taken. A sample is three bytes (blue, green, red; 0 past the end)
 *   times 16. The first is at 0; the next one a step later, less `length` until it is inside. A
 *   step is 3 x 499 bytes; if `length` is a multiple of 499, 3 x 491; if of 491 too, 3 x 487; if of
 *   487 too, 3 x 503.
 * - Start: neuron i has blue = green = red = 4096 i / n, frequency 65536 / n and bias 0; alpha is
 *   1024, radius n / 8 x 64.
 * - Contest: a neuron's distance is the sum of the absolute differences to the sample in blue,
 *   green and red. The nearest neuron is the first with the least distance, the winner the first
 *   with the least distance - bias / 4096 (rounded down). Then each neuron's frequency drops by f =
 *   frequency / 1024 and its bias rises by 1024 f; the nearest neuron's frequency rises by 64 and
 *   its bias drops by 65536.
 * - Moves: each channel v of the winner becomes v + alpha (sample - v) / 1024. With reach = radius
 *   / 64, the neurons at distances 0 < d < reach on both sides of the winner become v + a (sample -
 *   v) / 262144, where a = alpha x ((reach^2 - d^2) x 256 / reach^2).
 * - Cycles: after every (length / 30) / 100 samples, at least 1, alpha drops by alpha / 33 and
 *   radius by radius / 30.
 * - Palette: in the order of neurons, (v + 8) / 16, at most 255.
 *
 * @anchor sums
 * @par The entry of a color
 * The one with the least sum of absolute differences over blue, green and red. Ties are decided
 * along a list of the entries by green: for each place i from 0 on, the first entry with the least
 * green among those from i to the end changes places with the one at i. A color's search starts at
 * place s and goes s, s - 1, s + 1, s - 2, s + 2 ...; the first of the equals is the answer. For a
 * green that fills the places a to b - 1, s = (a + b) / 2; if it is the highest green in the list,
 * s = (a + n - 1) / 2. For another green, s is the place of the next higher green in the list; n -
 * 1 where there is none.
 * @{
 */

/**
 * Reduces an image to a learned palette, or expands an indexed image to 24 bits.
 *
 * @param image the image, replaced; 1, 4, 8 or 24 bits
 * @param bits  bits per pixel of the result: 1, 4, 8 or 24
 * @return 1; 0 for null, for an image that has this depth already or has 16, 32 or other bits, for
 *         other values of `bits` and when memory runs out
 *
 * An indexed image is replaced by its 24-bit copy first: biClrUsed and biClrImportant 0, no table,
 * padding 0; @ref nearest "colors beyond a short table" are the bytes that follow it. For 24 bits
 * that is all. For 1, 4 and 8 bits the @ref network "network" learns 2, 16 or 256 colors, which
 * become the color table (biClrUsed their number, biClrImportant 0), and every pixel becomes the
 * @ref sums "entry of its color". All other header fields keep their values.
 *
 * @par Limits
 * - When memory runs out or `bits` is refused, an indexed image may have been replaced by its
 *   24-bit copy; otherwise it is unchanged.
 */
OMB_API int32_t OMB_CDECL omb_neuquant(PackedDib** image, int32_t bits);

/**
 * Reduces a 24-bit image to a learned palette and spreads the error of each pixel over its
 * neighbours.
 *
 * @param image the image, replaced; 24 bits
 * @param bits  bits per pixel of the result: 4 or 8; also 1 or 2, in a layout of their own
 * @return 1; 0 for null, other depths of the image or the result, and when memory runs out
 *
 * The palette is learned by the @ref network "network" of 2^bits neurons. Then, row by row as they
 * are stored and in each row from left to right, a pixel's channels are limited to 0..255, its
 * color becomes that of its @ref sums "entry", and of the error (limited color - entry's color)
 *
 * - 3/8 go to the pixel to its right,
 * - 3/8 go to the pixel in the same column of the row stored before (the one below it in the
 *   picture),
 * - 1/4 goes to the right neighbour of that one.
 *
 * Each share is added and the sum truncated toward 0. The last column receives nothing from the
 * column before it, neither in its own row nor in the row stored before. When all errors are
 * spread, each pixel, limited to 0..255, is searched once more: the row stored before has its
 * palette colors already, and the shares that it got since then change its indices.
 *
 * The new header is the old one with the bit count and, in an information header, biClrUsed and
 * biClrImportant 0.
 *
 * @par Limits
 * - 1 and 2 bits: indices are stored as nibbles, high nibble first, at the row length of 1 or 2
 *   bits, row after row: each overwrites what runs over from the one before. The block is large
 *   enough for the last one, larger than its header says.
 * - 2 bits: the table has 4 entries after the header and the rows follow it, although header
 *   queries know no table at that depth.
 * - Core headers: errors are taken to the colors @ref byte40 "at byte 40" of the new block, as they
 *   are with the table written and the rows still 0.
 */
OMB_API int32_t OMB_CDECL omb_dither(PackedDib** image, int32_t bits);

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
 * Copies a device bitmap to a new image with an information header.
 *
 * @param bitmap  an HBITMAP, not selected into a device context
 * @param palette an HPALETTE that gives meaning to the pixels of palette devices; null for the
 *                default palette
 * @return the address of the new image, which the caller releases; 0 for null, for what is no
 *         bitmap, when GetDIBits() fails (the block it was given stays allocated then) and when
 *         memory runs out
 *
 * Device bitmaps of 1 bit per pixel become 1 bit, of up to 4 bits 4, of up to 8 bits 8, others 24.
 * The colors of the table are those that GetDIBits() gives; biSizeImage is the size of the rows.
 *
 * @par Limits
 * - For a short time a bitmap of more than 8 bits takes 64 MiB more than the image.
 */
OMB_API uintptr_t OMB_CDECL omb_bmtodib(struct HBITMAP__* bitmap, struct HPALETTE__* palette);

/**
 * Makes a DIB section of an image: a bitmap that GDI draws, with the image's header and pixels.
 *
 * @param dib an image with an information header, of any depth that CreateDIBSection() takes
 * @return an HBITMAP, which the caller deletes with DeleteObject(); null for null, for a core
 *         header, for an image without pixels and when the section cannot be created
 *
 * At up to 8 bits it gets the full 2, 16 or 256 colors that follow the header, whatever biClrUsed
 * says; what lies past the block counts as black. Of every row, as many bytes count as planes x
 * width x bits per pixel give; with 1 plane, as it should be, that is all of them.
 */
OMB_API struct HBITMAP__* OMB_CDECL omb_DIBToDIBSection(const PackedDib* dib);

/** Parts of a window, for omb_CopyWindowToDIB(). */
enum OmbWindowPart {
  OMB_WINDOW_WHOLE = 1, /**< with its frame */
  OMB_WINDOW_CLIENT = 2 /**< the client area */
};

/**
 * Copies what is on the screen where a window is to a new image, as omb_bmtodib() makes it.
 *
 * @param window   an HWND
 * @param selector one of ::OmbWindowPart: 1 the whole window, 2 its client area
 * @return the address of the new image, which the caller releases; 0 for null, other selectors, a
 *         rectangle that is empty or not on the screen, and when memory runs out
 *
 * Parts outside the screen are cut off: a window half to the left of it gives its right half.
 */
OMB_API uintptr_t OMB_CDECL omb_CopyWindowToDIB(struct HWND__* window, uint16_t selector);

#endif /* _WIN32 */

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* OMBRILO_OMBRILO_H_ */
