program Scaled;  // the library from Delphi and Free Pascal

{$APPTYPE CONSOLE}

const
  Dll = {$IFDEF MSWINDOWS} 'ombrilo.dll' {$ELSE} 'libombrilo.so' {$ENDIF};

function omb_newdib(Width, Height: Integer; Bits: Word): Pointer; cdecl; external Dll;
procedure omb_freedib(Dib: Pointer); cdecl; external Dll;
function omb_invert(Dib: Pointer): Cardinal; cdecl; external Dll;
function omb_scale(var Image: Pointer; Width, Height, Mode: Cardinal): Cardinal; cdecl; external Dll;
function omb_DIBWidth(Dib: Pointer): Cardinal; cdecl; external Dll;
function omb_DIBHeight(Dib: Pointer): Cardinal; cdecl; external Dll;
function omb_FindDIBBits(Dib: Pointer): PByte; cdecl; external Dll;

var
  Image: Pointer;
  Pixel: PByte;
  I: Integer;
begin
  Image := omb_newdib(3, 2, 24);
  try
    { omb_scale replaces the block: Image holds the new address afterwards. }
    if (Image = nil) or (omb_invert(Image) = 0) or (omb_scale(Image, 6, 4, 2) = 0) then Halt(1);
    Write(omb_DIBWidth(Image), ' x ', omb_DIBHeight(Image), ' pixels, the first one');
    Pixel := omb_FindDIBBits(Image);
    for I := 1 to 3 do
    begin
      Write(' ', Pixel^);
      Inc(Pixel);
    end;
    Writeln;
  finally
    omb_freedib(Image);
  end;
end.
