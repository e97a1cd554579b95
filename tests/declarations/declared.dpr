program Declared;  { The unit that is written from the header, in use. }

{$APPTYPE CONSOLE}

uses
  Ombrilo;

var
  Image: PPackedDib;
  Rectangle: TOmbRect;
  Kernel: PKERNAL;
  Pixel: PByte;
begin
  Image := omb_newdib(12, 8, 24);
  Rectangle.left := 0;
  Rectangle.top := 0;
  Rectangle.right := 8;
  Rectangle.bottom := 5;
  Kernel := omb_getKERNAL(OMB_KERNAL_CIRCLE_3X3);
  if (omb_invert(Image) = 0) or (omb_crop(Image, @Rectangle) = 0) or
    (omb_resize(Image, 6, 4, OMB_RESIZE_BOX) = 0) or
    (omb_DoKernalMorphDIB(Image, 24, OMB_MORPH_CLOSE, Kernel, 1) = 0) or
    (omb_EdgePage(Image, OMB_SIZE_3X3, 0, 10, OMB_EDGE_SOBEL) = 0) then Halt(1);
  Pixel := omb_FindDIBBits(Image);
  Writeln(omb_DIBWidth(Image), ' x ', omb_DIBHeight(Image), ' pixels, the first one ', Pixel[0], ' ',
    Pixel[1], ' ', Pixel[2]);
  omb_freedib(Image);
end.
