// The class that is written from the header, in use; every function of it must be in the library.
using System;
using System.Reflection;
using System.Runtime.InteropServices;

static class Declared {
  static int Main() {
    bool windows = Environment.OSVersion.Platform == PlatformID.Win32NT;
    foreach (MethodInfo method in typeof(Ombrilo).GetMethods(BindingFlags.Static | BindingFlags.Public)) {
      bool windows_alone = method.Name == "omb_bmtodib" || method.Name == "omb_DIBToDIBSection" ||
                           method.Name == "omb_CopyWindowToDIB";
      if (windows || !windows_alone) Marshal.Prelink(method);
    }
    IntPtr image = Ombrilo.omb_newdib(12, 8, 24);
    var rectangle = new Ombrilo.OmbRect { left = 0, top = 0, right = 8, bottom = 5 };
    IntPtr address = Ombrilo.omb_getKERNAL((uint)Ombrilo.OmbKernal.OMB_KERNAL_CIRCLE_3X3);
    var kernel = (Ombrilo.KERNAL)Marshal.PtrToStructure(address, typeof(Ombrilo.KERNAL));
    if (kernel.width != 3 || Ombrilo.omb_invert(image) == 0 ||
        Ombrilo.omb_crop(ref image, ref rectangle) == 0 ||
        Ombrilo.omb_resize(ref image, 6, 4, (uint)Ombrilo.OmbResizeFilter.OMB_RESIZE_BOX) == 0) {
      return 1;
    }
    byte[] pixel = new byte[3];
    Marshal.Copy(Ombrilo.omb_FindDIBBits(image), pixel, 0, 3);
    Console.WriteLine("{0} x {1} pixels, the first one {2}", Ombrilo.omb_DIBWidth(image),
                      Ombrilo.omb_DIBHeight(image), string.Join(" ", pixel));
    Ombrilo.omb_freedib(image);
    return 0;
  }
}
