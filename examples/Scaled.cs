// The library from C#.
using System;
using System.Runtime.InteropServices;

static class Scaled {
  const string Dll = "ombrilo";  // ombrilo.dll on Windows, libombrilo.so elsewhere
  const CallingConvention C = CallingConvention.Cdecl;

  [DllImport(Dll, CallingConvention = C)]
  static extern IntPtr omb_newdib(int width, int height, ushort bits);
  [DllImport(Dll, CallingConvention = C)]
  static extern void omb_freedib(IntPtr dib);
  [DllImport(Dll, CallingConvention = C)]
  static extern uint omb_invert(IntPtr dib);
  [DllImport(Dll, CallingConvention = C)]
  static extern uint omb_scale(ref IntPtr image, uint width, uint height, uint mode);
  [DllImport(Dll, CallingConvention = C)]
  static extern uint omb_DIBWidth(IntPtr dib);
  [DllImport(Dll, CallingConvention = C)]
  static extern uint omb_DIBHeight(IntPtr dib);
  [DllImport(Dll, CallingConvention = C)]
  static extern IntPtr omb_FindDIBBits(IntPtr dib);

  static int Main() {
    IntPtr image = omb_newdib(3, 2, 24);
    try {
      // omb_scale replaces the block: image holds the new address afterwards.
      if (image == IntPtr.Zero || omb_invert(image) == 0 || omb_scale(ref image, 6, 4, 2) == 0) return 1;
      byte[] pixel = new byte[3];
      Marshal.Copy(omb_FindDIBBits(image), pixel, 0, 3);
      Console.WriteLine("{0} x {1} pixels, the first one {2}", omb_DIBWidth(image), omb_DIBHeight(image),
                        string.Join(" ", pixel));
      return 0;
    } finally {
      omb_freedib(image);
    }
  }
}
