#!/usr/bin/env python3
"""Writes declarations of the library for other languages from its C header.

    declare.py HEADER pascal|csharp > FILE

Ombrilo.pas is a unit for Delphi and Free Pascal, Ombrilo.cs a class for .NET. Both declare every
export, every record and every named number, each with its documentation.
"""
import re
import sys

BASE = {  # C type without const and *: Pascal, C#
    'void': ('', 'void'), 'int32_t': ('Integer', 'int'), 'uint32_t': ('Cardinal', 'uint'),
    'uint16_t': ('Word', 'ushort'), 'uint8_t': ('Byte', 'byte'), 'int': ('Integer', 'int'),
    'float': ('Single', 'float'), 'double': ('Double', 'double'), 'char': ('AnsiChar', 'byte'),
    'uint64_t': ('UInt64', 'ulong'), 'uintptr_t': ('NativeUInt', 'UIntPtr'),
    'intptr_t': ('NativeInt', 'IntPtr'), 'ptrdiff_t': ('NativeInt', 'IntPtr'),
}
PASCAL_WORDS = {'type', 'begin', 'end', 'to', 'of', 'in', 'mod', 'file', 'set', 'array', 'string'}
CSHARP_WORDS = {'in', 'out', 'ref', 'is', 'as', 'params', 'object', 'fixed', 'base', 'checked'}


class Header:
    """What a header declares, in its order: (kind, name, documentation, content)."""

    def __init__(self, text):
        self.items, self.structs = [], set()
        comment = r'(?P<doc>/\*\*(?:(?!\*/).)*\*/)?\s*'
        pattern = re.compile(
            comment + r'(?:'
            r'typedef struct(?: \w+)? \{(?P<fields>[^}]*)\} (?P<struct>\w+);'
            r'|enum (?P<enum>\w+) \{(?P<values>[^}]*)\};'
            r'|OMB_API (?P<result>[\w *]*?)OMB_CDECL (?P<function>\w+)\((?P<parameters>[^()]*)\);)',
            re.S)
        for match in pattern.finditer(text):
            doc = plain(match['doc'])
            if match['struct']:
                self.structs.add(match['struct'])
                self.items.append(('struct', match['struct'], doc, members(match['fields'], ';')))
            elif match['enum']:
                self.items.append(('enum', match['enum'], doc, members(match['values'], ',')))
            else:
                result = match['result'].strip()
                self.items.append(('function', match['function'], doc,
                                   (result, parameters(match['parameters']),
                                    '...' in match['parameters'])))


def plain(comment):
    """The words of a documentation comment, line by line."""
    if not comment:
        return []
    lines = [re.sub(r'^\s*\* ?', '', line) for line in comment[3:-2].strip('*<').split('\n')]
    text = '\n'.join(line.rstrip() for line in lines).strip()
    text = re.sub(r'@defgroup[^@]*(@\{)?|@[{}]|@note ', '', text)
    text = re.sub(r'@param\s+(\S+)\s+', r'\1: ', text)
    text = re.sub(r'@return\s+', 'Result: ', text)
    return text.strip().split('\n')


def members(text, end):
    """(declaration, documentation) of fields or values."""
    found = re.findall(r'([^;,{}/]+?)\s*(?:%s|(?=/\*)|$)\s*(?:/\*\*<(.*?)\*/)?' % end, text, re.S)
    return [(' '.join(d.split()), ' '.join(c.split())) for d, c in found if d.strip()]


def parameters(text):
    if text.strip() == 'void':
        return []
    parts = ' '.join(text.split()).split(',')
    return [split_declaration(part) for part in parts if part.strip() != '...']


def split_declaration(declaration):
    """'const uint8_t* colors' as ('uint8_t', stars, 'colors', const, array length)."""
    match = re.fullmatch(r'\s*(const )?(?:struct )?(\w+)\s*(\**)\s*(\w+)(?:\[(\d+)\])?\s*', declaration)
    if not match:
        raise SystemExit('declare.py does not understand: ' + declaration)
    const, base, stars, name, length = match.groups()
    return base, len(stars) + (1 if length else 0), name, bool(const)


class Pascal:
    def __init__(self, header):
        self.header = header

    def name(self, name):
        return '&' + name if name.lower() in PASCAL_WORDS else name

    def type(self, base, stars):
        if stars == 0:
            return 'T' + base if base in self.header.structs else BASE[base][0]
        if stars == 1 and base == 'uint8_t':
            return 'PByte'
        if stars == 1 and base == 'char':
            return 'PAnsiChar'
        if stars == 1 and base in ('int32_t', 'uint32_t'):
            return 'PInteger' if base == 'int32_t' else 'PCardinal'
        if stars == 1 and base in self.header.structs:
            return 'P' + base
        if base == 'PackedDib':
            return 'PPackedDib' if stars == 1 else 'PPPackedDib'
        return 'Pointer'

    def parameter(self, base, stars, name, const):
        if base == 'PackedDib' and stars == 2:
            return 'var %s: PPackedDib' % self.name(name)
        return '%s: %s' % (self.name(name), self.type(base, stars))

    def write(self):
        out = ['{ Ombrilo for Delphi and Free Pascal, written from the C header. }', 'unit Ombrilo;',
               '', '{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}', '', 'interface', '', 'const',
               "  OmbriloDll = {$IFDEF MSWINDOWS} 'ombrilo.dll' {$ELSE} 'libombrilo.so' {$ENDIF};", '',
               'type', '  { An image: the first byte of a packed device-independent bitmap. }',
               '  PPackedDib = Pointer;', '']
        for kind, name, doc, content in self.header.items:
            if kind != 'struct':
                continue
            out += self.comment(doc, '  ') + ['  P%s = ^T%s;' % (name, name), '  T%s = record' % name]
            for declaration, remark in content:
                base, stars, field, _ = split_declaration(declaration)
                out.append('    %s: %s; { %s }' % (self.name(field), self.type(base, stars), remark))
            out += ['  end;', '']
        for kind, name, doc, content in self.header.items:
            if kind == 'enum':
                out += self.comment(doc, '') + ['const']
                out += ['  %s; { %s }' % (value, remark) for value, remark in content] + ['']
        for kind, name, doc, content in self.header.items:
            if kind == 'function':
                windows = is_windows(content)
                out += ['{$IFDEF MSWINDOWS}'] * windows + self.comment(doc, '')
                result, own, variadic = content
                base, stars, _, _ = split_declaration(result + ' x')
                arguments = '; '.join(self.parameter(*p) for p in own)
                what = 'procedure' if base == 'void' and not stars else 'function'
                end = '' if what == 'procedure' else ': ' + self.type(base, stars)
                out.append('%s %s%s%s; cdecl;%s external OmbriloDll;'
                           % (what, name, '(%s)' % arguments if arguments else '', end,
                              ' varargs;' if variadic else ''))
                out += ['{$ENDIF}'] * windows + ['']
        return '\n'.join(out + ['implementation', '', 'end.', ''])

    def comment(self, doc, indent):
        text = ('\n' + indent + '  ').join(doc).replace('{', '(').replace('}', ')')
        text = text.replace('\n' + indent + '  \n', '\n\n')
        return [indent + '{ ' + text + ' }'] if doc else []


class CSharp:
    def __init__(self, header):
        self.header = header

    def name(self, name):
        return '@' + name if name in CSHARP_WORDS else name

    def type(self, base, stars):
        if stars == 0:
            return base if base in self.header.structs else BASE[base][1]
        return 'IntPtr'

    def parameter(self, base, stars, name, const):
        name = self.name(name)
        if stars == 2 and base == 'PackedDib':
            return 'ref IntPtr ' + name
        if stars == 1 and base in self.header.structs:
            record = 'IntPtr' if base == 'KERNAL' else base
            if record == 'IntPtr':
                return 'IntPtr ' + name
            return ('[In] %s[] ' if 'points' in name else 'ref %s ') % record + name
        if stars == 1 and base in ('uint8_t', 'int32_t', 'uint32_t'):
            return '[%s] %s[] %s' % ('In' if const else 'In, Out', BASE[base][1], name)
        if stars == 1 and base == 'char':
            return '[MarshalAs(UnmanagedType.LPStr)] string ' + name
        return '%s %s' % (self.type(base, stars), name)

    def write(self):
        out = ['// Ombrilo for .NET, written from the C header.', 'using System;',
               'using System.Runtime.InteropServices;', '', 'public static class Ombrilo {',
               '  // ombrilo.dll on Windows, libombrilo.so elsewhere.',
               '  const string Dll = "ombrilo";',
               '  const CallingConvention C = CallingConvention.Cdecl;', '']
        for kind, name, doc, content in self.header.items:
            out += self.comment(doc)
            if kind == 'struct':
                out += ['  [StructLayout(LayoutKind.Sequential)]', '  public struct %s {' % name]
                for declaration, remark in content:
                    base, stars, field, _ = split_declaration(declaration)
                    out += ['    /// <summary>%s</summary>' % escaped(remark),
                            '    public %s %s;' % (self.type(base, stars), self.name(field))]
                out += ['  }', '']
            elif kind == 'enum':
                out.append('  public enum %s {' % name)
                for value, remark in content:
                    out += ['    /// <summary>%s</summary>' % escaped(remark), '    %s,' % value]
                out += ['  }', '']
            else:
                result, own, _ = content
                base, stars, _, _ = split_declaration(result + ' x')
                arguments = ', '.join(self.parameter(*p) for p in own)
                out += ['  [DllImport(Dll, CallingConvention = C)]',
                        '  public static extern %s %s(%s);' % (self.type(base, stars), name, arguments),
                        '']
        return '\n'.join(out[:-1] + ['}', ''])

    def comment(self, doc):
        if not doc:
            return []
        return ['  /// <summary>'] + ['  /// ' + escaped(line) for line in doc] + ['  /// </summary>']


def is_windows(content):
    """Whether a function takes or gives handles of Windows."""
    result, own, _ = content
    return any('__' in base for base in [result] + [p[0] for p in own])


def escaped(text):
    return text.replace('&', '&amp;').replace('<', '&lt;').replace('>', '&gt;')


def main():
    if len(sys.argv) != 3 or sys.argv[2] not in ('pascal', 'csharp'):
        raise SystemExit(__doc__)
    with open(sys.argv[1], encoding='utf-8') as file:
        header = Header(file.read())
    sys.stdout.write((Pascal if sys.argv[2] == 'pascal' else CSharp)(header).write())


if __name__ == '__main__':
    main()
