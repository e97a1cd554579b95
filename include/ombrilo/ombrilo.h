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

/** Copies a record, arrays included. Null gives null, and so does running out of memory. */
OMB_API KERNAL* omb_cloneKERNAL(const KERNAL* kernel);

/**
 * Sets every field of a record to 0, pointers included, and releases nothing: for records that the
 * caller provides, before they own anything. Null is accepted.
 */
OMB_API void omb_zeroKERNAL(KERNAL* kernel);

/** Releases a record of omb_newKERNAL() or omb_cloneKERNAL() with its arrays. Null is accepted. */
OMB_API void omb_destroyKERNAL(KERNAL* kernel);

/**
 * A built-in record, which lives as long as the library and must not be changed or released.
 *
 * 0 Circle 3x3, 1 Circle 5x5, 2 Circle 7x7, 3 Circle 11x11, 4 Colomn 1x3, 5 Cross 3x3,
 * 6 to 8 hipass 3x3 to 7x7, 9 to 11 higauss 5x5 to 9x9, 12 to 14 horzedge 3x3 to 7x7,
 * 15 to 17 laplace 3x3 to 7x7, 18 to 20 lopass 3x3 to 7x7, 21 to 23 Ring 3x3 to 7x7,
 * 24 to 26 Row 3x1 to 7x1, 27 sculpt, 28 to 31 Square 2x2 to 7x7, 32 to 34 tophat 3x3 to 7x7,
 * 35 to 37 unsharp 3x3 to 7x7, 38 variance 3x3, 39 to 41 vertedge 3x3 to 7x7,
 * 42 to 44 well 3x3 to 7x7. The name of 27 ends in a blank.
 *
 * @return null for 45 and above
 */
OMB_API const KERNAL* omb_getKERNAL(uint32_t index);

/** @} */

/** @defgroup filters Neighbourhood filters
 *
 * Each result depends on the image as it was before the call. Images of 1, 4 and 8 bits are
 * filtered as colors, and a result becomes the index of the nearest entry (least squared distance,
 * the lowest index on a tie) of a palette of 2, 16 or 256 entries, which beyond a shorter color
 * table continues in the bytes that follow. Only omb_DoConvoluteDIB() takes the bytes of an 8-bit
 * image as values.
 *
 * A border of the image is set to zero bytes (black, or index 0), and so is the padding of rows; an
 * image that is all border, and an image of another depth, comes back with zero bytes only. Without
 * memory the image stays as it is.
 * @{ */

/**
 * Convolution with one of 39 kernels: sums of weighted neighbours, channel by channel, divided by
 * the sum of the weights unless that is 0, truncated toward zero and clamped to 0..255.
 *
 * 1 to 4 smooth (box 3x3, box 5x5, binomial 3x3, centre-weighted 5x5); 5 to 8 sharpen, where 8
 * keeps flat areas and turns local detail around; 9 to 11 Laplacian; 12 to 19 the rotations of a
 * Sobel gradient; 20 to 27 the centre minus one of its neighbours; 28 to 35 the rotations of a
 * compass mask; 36 to 39 lines (row, column, diagonals). 2, 4 and 8 are 5x5 and zero a border of 2
 * pixels, the others are 3x3 and zero one of 1 pixel.
 *
 * @param dib  the image; 1, 4, 8 or 24 bits
 * @param type 1 to 39; other numbers leave the image unchanged
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
 * @return 1; 0 for null, for other records, for rows longer than their row length, and when memory
 * runs out
 */
OMB_API int32_t omb_DoConvoluteDIB(PackedDib* dib, const KERNAL* kernel, int32_t passes,
                                   int32_t strength);

/**
 * Relief: convolution with a directional 3x3 kernel, plus a color. The kernels are those of
 * omb_convolute() from 12 on; they sum to 0, so that flat areas take the color.
 *
 * @param dib       the image; 1, 4, 8 or 24 bits; a border of 1 pixel becomes zero
 * @param direction 0 to 27
 * @param color     0x00BBGGRR, added to the sums before they are clamped to 0..255
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
 * Images of 1, 4 and 8 bits are treated as colors and results become the nearest palette entry, as
 * with the filters; only omb_DoKernalMorphDIB() takes the bytes of an 8-bit image as values. Images
 * of other depths do not change, and no image does without memory.
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

#ifdef __cplusplus
}
#endif

#endif /* OMBRILO_OMBRILO_H_ */
