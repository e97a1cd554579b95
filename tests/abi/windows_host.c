/* A host of ombrilo.dll that shares nothing with it but the C runtime: windows_host ombrilo.dll */
#include <ombrilo/ombrilo.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <windows.h>

#define CHECK(condition) \
  if (!(condition)) return printf("%d: %s\n", __LINE__, #condition), 1

typedef uint32_t (*Version)(void);
typedef uint32_t (*Replace)(PackedDib**);
typedef uintptr_t (*Query)(const PackedDib*);
typedef HBITMAP (*Show)(const PackedDib*);

int main(int argc, char** argv) {
  CHECK(argc == 2);
  const HMODULE library = LoadLibraryA(argv[1]);
  CHECK(library != NULL);

  /* The properties that Explorer shows. */
  DWORD handle = 0;
  BYTE resource[4096];
  CHECK(GetFileVersionInfoSizeA(argv[1], &handle) <= sizeof resource);
  CHECK(GetFileVersionInfoA(argv[1], 0, sizeof resource, resource));
  VS_FIXEDFILEINFO* fixed = NULL;
  UINT size = 0;
  CHECK(VerQueryValueA(resource, "\\", (void**)&fixed, &size));
  CHECK(fixed->dwFileVersionMS == (OMB_VERSION_MAJOR << 16 | OMB_VERSION_MINOR));
  CHECK(fixed->dwFileVersionLS == OMB_VERSION_PATCH << 16);
  char* text = NULL;
  CHECK(VerQueryValueA(resource, "\\StringFileInfo\\040904B0\\FileDescription", (void**)&text,
                       &size));
  CHECK(strstr(text, "Image processing") != NULL);
  CHECK(VerQueryValueA(resource, "\\StringFileInfo\\040904B0\\ProductName", (void**)&text, &size));
  CHECK(strcmp(text, "Ombrilo") == 0);

  const Version version = (Version)(void*)GetProcAddress(library, "omb_version");
  CHECK(version != NULL);
  CHECK(version() == (OMB_VERSION_MAJOR << 16 | OMB_VERSION_MINOR << 8 | OMB_VERSION_PATCH));

  /* A block of the host's heap goes, one of the library's comes. */
  const Replace transformat = (Replace)(void*)GetProcAddress(library, "omb_transformat");
  CHECK(transformat != NULL);
  for (int i = 0; i < 100; ++i) {
    BITMAPINFOHEADER* header = calloc(1, sizeof *header + 400 * 300 * 2);
    header->biSize = sizeof *header;
    header->biWidth = 400;
    header->biHeight = 300;
    header->biPlanes = 1;
    header->biBitCount = 16;
    PackedDib* image = (PackedDib*)header;
    CHECK(transformat(&image) == 1);
    CHECK(((BITMAPINFOHEADER*)image)->biBitCount == 24);
    free(image);
  }

  /* The desktop's modules are loaded by the first call that needs them. */
  struct {
    BITMAPINFOHEADER header;
    RGBQUAD colors[2];
    DWORD row;
  } small = {{sizeof small.header, 9, 1, 1, 1, 0, 0, 0, 0, 0, 0}, {{0}}, 0};
  const Query create_palette = (Query)(void*)GetProcAddress(library, "omb_CreateDIBPalette");
  const Show to_section = (Show)(void*)GetProcAddress(library, "omb_DIBToDIBSection");
  CHECK(GetModuleHandleA("gdi32.dll") == NULL);
  CHECK(create_palette((PackedDib*)&small) != 0);
  CHECK(GetModuleHandleA("gdi32.dll") != NULL);
  CHECK(to_section((PackedDib*)&small) != NULL);
  CHECK(FreeLibrary(library));
  return 0;
}
