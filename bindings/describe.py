"""One description of all operations, for the packages in this folder.

Signatures, documentation and enumerations come from the C header; names of arguments, their
defaults, ranges and values come from `omb list --json`. What neither says stands in ARGUMENTS: how
arguments that people give become those of the C function.

    describe.py HEADER STEPS RAMPS python|js OUTPUT_FOLDER
    describe.py HEADER STEPS RAMPS check     tells which exports and steps a package lacks
"""

import json
import pathlib
import re
import sys
import textwrap

# Steps whose names are not those of their functions.
FUNCTIONS = {"coloroffset": "omb_adjustcolor", "colorgain": "omb_adjustcolor", "hsi": "omb_adjustcolor",
             "hsl": "omb_adjustcolor", "diffuse": "omb_diffuse_seed", "equalize": "omb_EnhancePage",
             "kernel": "omb_DoConvoluteDIB", "logarithm": "omb_EnhancePage",
             "morph": "omb_DoKernalMorphDIB", "stretch": "omb_EnhancePage",
             "truecolor": "omb_neuquant", "whiten": "omb_EnhancePage"}

# Exports without a counterpart in the packages, and why.
WITHOUT = {
    "omb_autoclr": "it always gives 1",
    "omb_BytesPerLine": "the packages know their rows",
    "omb_diffuse": "it is omb_diffuse_seed() with a seed from the clock",
    "omb_newKERNAL": "kernels are objects of the language",
    "omb_cloneKERNAL": "kernels are objects of the language",
    "omb_zeroKERNAL": "kernels are objects of the language",
    "omb_destroyKERNAL": "kernels are objects of the language",
    "omb_CreateDIBPalette": "its result is a handle of Windows",
    "omb_bmtodib": "it takes handles of Windows",
    "omb_DIBToDIBSection": "its result is a handle of Windows",
    "omb_CopyWindowToDIB": "it takes handles of Windows",
}


def constant(value):
    return {"convert": "constant", "value": value}


def tone(curve, cut):
    """Arguments of omb_EnhancePage for a tone curve."""
    return [constant(2), "percent", cut, {"convert": "block", "parameter": "blocks"}, constant(0),
            constant(4), {"convert": "scope", "parameter": "blocks"}, constant(curve)]


POINTS = [{"convert": "points", "parameter": "points"}, {"convert": "count", "parameter": "points"},
          "channel"]

# Arguments of C functions that are not the parameters one by one. A plain string is a parameter.
ARGUMENTS = {
    "binary": [{"convert": "threshold", "parameter": "threshold"}],
    "coloroffset": [constant(1), "red", "green", "blue"],
    "colorgain": [constant(2), "red", "green", "blue"],
    "hsi": [constant(3), "hue", "saturation", "intensity"],
    "hsl": [constant(4), "hue", "saturation", "lightness"],
    "curve": POINTS,
    "segmentoperation": POINTS,
    "truecolor": [constant(24)],
    "equalize": tone(0, "limit"),
    "stretch": tone(1, "cut"),
    "whiten": tone(2, "cut"),
    "logarithm": tone(3, constant(0)),
    "diffuse": ["area", {"convert": "seed", "parameter": "seed"}],
    "granulate": ["width", {"convert": "square", "parameter": "height"}],
    "crop": [{"convert": "rectangle", "parameters": ["left", "top", "right", "bottom"]}],
    "edgepage": [{"convert": "page_size", "parameter": "size"}, "passes", "strength", "filter"],
    "enhancepage": [{"convert": "page_size", "parameter": "size"}, "passes", "strength",
                    constant(0), "percentile", "filter",
                    constant(0), constant(0)],
    "kernel": [{"convert": "kernel", "parameter": "name"}, "passes", "strength"],
    "morph": [{"convert": "depth"}, "operation", {"convert": "kernel", "parameter": "shape"},
              "iterations"],
    "morphologicalpage": ["size", "shape", "iterations", "operation"],
    "pseudocolor": [{"convert": "ramp", "parameter": "ramp"}],
    "resize": [{"convert": "width", "parameter": "size"}, {"convert": "height", "parameter": "size"},
               "filter"],
    "scale": [{"convert": "width", "parameter": "size"}, {"convert": "height", "parameter": "size"},
              "mode"],
}

# When the library's 0 does not say that it refused: there was nothing to do, or the depth tells.
IDLE = {"adjustghms": "always", "extractcolor": "depth_tells", "gammacorrection": "always", "neuquant": "same_depth",
        "rotate": "full_turn", "scale": "same_size", "truecolor": "same_depth"}

# What images of 16 and 32 bits take instead.
WIDE = {"truecolor": "transformat"}

SCALARS = {"int32_t": "i32", "uint32_t": "u32", "uint16_t": "u16", "uint64_t": "u64",
           "float": "f32", "double": "f64"}


def functions_of(header):
    """Name -> (result, [(type, name), ...], documentation) of every export."""
    found = {}
    pattern = r"/\*\*((?:(?!\*/).)*)\*/\s*OMB_API\s+([^;]*?)OMB_CDECL\s+(omb_\w+)\(([^;]*?)\);"
    for comment, result, name, parameters in re.findall(pattern, header, re.S):
        pairs = []
        for text in re.sub(r"\s+", " ", parameters).split(","):
            text = text.strip()
            if text not in ("void", "..."):
                kind, own_name = re.fullmatch(r"(.*?[ *])(\w+)", text).groups()
                pairs.append((kind.replace(" ", ""), own_name))
        lines = [re.sub(r"^\s*\* ?", "", line) for line in comment.split("\n")]
        found[name] = (result.strip(), pairs, "\n".join(lines).strip())
    return found


def enumerations_of(header):
    """Name -> {constant: (value, documentation)}."""
    found = {}
    for name, body in re.findall(r"enum (Omb\w+) \{(.*?)\};", header, re.S):
        members = re.findall(r"(OMB_\w+) = (\d+),?\s*/\*\*<(.*?)\*/", body, re.S)
        if members:
            found[name] = {m: (int(v), " ".join(doc.replace("*", " ").split()))
                           for m, v, doc in members}
    return found


def ramps_of(source):
    """Name -> colors at even distances from black to white, as 0xRRGGBB."""
    return {name: [int(stop, 16) for stop in re.findall(r"0x[0-9a-fA-F]{6}", stops)]
            for name, stops in re.findall(r'\{"(\w+)",\s*\{([^}]*)\}\}', source)}


def enumeration_of(function, parameter, functions, enumerations):
    """Value -> constant, of the enumeration that the documentation names for a parameter."""
    text = re.search(rf"@param +{parameter}\b((?:(?!\n@).)*)", functions[function][2], re.S)
    if text is None:
        return {}
    if same := re.search(r"as (omb_\w+)\(\) takes it", text[1]):
        return enumeration_of(same[1], parameter, functions, enumerations)
    named = re.search(r"::(Omb\w+)", text[1])
    members = enumerations.get(named[1], {}) if named else {}
    return {str(value): constant for constant, (value, _) in members.items()}


def operation_of(step, functions, enumerations):
    by_lowercase = {name.lower(): name for name in functions}
    function = FUNCTIONS.get(step["name"]) or by_lowercase.get("omb_" + step["name"])
    if function is None:
        return None
    result, pairs, doc = functions[function]
    wanted = ARGUMENTS.get(step["name"], [p["name"] for p in step["parameters"]])
    arguments, rest = [], pairs[1:]
    for argument in wanted:
        if not rest:
            return None
        kind, c_name = rest.pop(0)
        if isinstance(argument, str):
            argument = {"convert": "number", "parameter": argument}
            if kind not in SCALARS:
                return None
        argument = dict(argument, type=SCALARS.get(kind, "pointer"))
        if constants := enumeration_of(function, c_name, functions, enumerations):
            argument["enumeration"] = constants
        arguments.append(argument)
    if rest:
        return None
    return {
        "name": step["name"], "function": function, "family": step["family"].replace("&", ""),
        "summary": step["summary"], "usage": step["usage"], "depths": step["depths"],
        "note": step.get("note"), "before": step.get("before"), "wide": WIDE.get(step["name"]),
        "parameters": step["parameters"], "examples": step["examples"],
        "replaces": pairs[0][0] == "PackedDib**",
        "result": {"void": "none", "uintptr_t": "image"}.get(result, "status"),
        "idle": IDLE.get(step["name"]), "arguments": arguments, "documentation": doc,
    }


def queries_of(functions):
    """What images are asked: methods without arguments."""
    return [{"name": name[4:], "function": name, "yes_or_no": doc.startswith("Whether"),
             "documentation": doc}
            for name, (result, pairs, doc) in functions.items()
            if [kind for kind, _ in pairs] == ["constPackedDib*"] and result == "int32_t" and
            name not in WITHOUT]


def describe(header, steps, ramps):
    functions, enumerations = functions_of(header), enumerations_of(header)
    operations = []
    for step in steps["steps"]:
        operation = operation_of(step, functions, enumerations)
        if operation is None:
            raise SystemExit(f"describe.py: ARGUMENTS does not suit the step {step['name']}")
        operations.append(operation)
    return {"version": steps["version"], "operations": operations,
            "queries": queries_of(functions), "enumerations": enumerations,
            "ramps": ramps_of(ramps)}


def check(header, description):
    """Every export has a counterpart in every package, or a reason why not."""
    here = pathlib.Path(__file__).parent
    described = {o["function"] for o in description["operations"] + description["queries"]}
    functions = functions_of(header)
    missing = [f"WITHOUT: {name} is no export" for name in WITHOUT.keys() - functions.keys()]
    packages = {"Python": (here.glob("python/src/ombrilo/*.py"), described),
                "JavaScript": (here.glob("js/*.js"), described),
                "C++": ([here.parent / "include/ombrilo/ombrilo.hpp"], set())}
    for package, (files, found) in packages.items():
        text = " ".join(path.read_text(encoding="utf-8") for path in files)
        found = found | set(re.findall(r"\bomb_\w+", text)) | WITHOUT.keys()
        for name, (_, pairs, _) in functions.items():
            # C++ can call what takes no image as it is.
            plain = package == "C++" and not any("PackedDib" in kind for kind, _ in pairs)
            if name not in found and not plain:
                missing.append(f"{package}: {name} has no counterpart")
    if missing:
        raise SystemExit("\n".join(missing))


def default_of(parameter):
    return repr(parameter["default"]) if "default" in parameter else None


def python_type(parameter):
    names = [v["name"] for v in parameter.get("values", [])]
    literal = "Literal[" + ", ".join(map(repr, names)) + "]" if names else None
    types = {"integer": "int", "number": "float", "choice": "int", "color": "Color",
             "text": {"size": "Size", "name": "KernelLike", "points": "Points",
                      "shape": "KernelLike"}.get(parameter["name"], "str")}
    return " | ".join(filter(None, [types[parameter["type"]], literal]))


def plain(documentation):
    """A comment of the C header without marks of Doxygen that people need not see."""
    text = re.sub(r"@see @ref \w+\n|@par ", "", documentation)
    return re.sub(r'@ref\s+\w+\s+"([^"]*)"', r"\1", text).replace("::Omb", "Omb")


def quoted(documentation):
    """The same as text between triple quotes."""
    return plain(documentation).replace("\\", "\\\\").replace('"""', "'''")


def python_method(operation):
    parameters = [p["name"] + ": " + python_type(p) +
                  (" = " + default_of(p) if "default" in p else "")
                  for p in operation["parameters"]]
    head = "    def {}(self{}) -> Image:".format(
        operation["name"], "".join(", " + p for p in parameters))
    doc = [operation["summary"] + ".", ""]
    for p in operation["parameters"]:
        form = re.sub(r"^an? ", "", p["form"])
        doc += textwrap.wrap(f"{p['name']}: {p['help']} ({form})", 88, subsequent_indent="    ")
    doc += ["", "Depths: " + ", ".join(map(str, operation["depths"])) + " bits per pixel."]
    if operation["note"]:
        doc += textwrap.wrap(operation["note"], 88)
    doc += ["", "The C function, {}:".format(operation["function"]), ""]
    doc += ["    " + line if line else "" for line in operation["documentation"].split("\n")]
    text = textwrap.indent(quoted("\n".join(doc)), " " * 8).lstrip()
    names = ", ".join(f'"{p["name"]}": {p["name"]}' for p in operation["parameters"])
    return (f'{head}\n        """{text}\n        """\n'
            f'        return self._run("{operation["name"]}", {{{names}}})\n')


def python_query(query):
    kind = "bool" if query["yes_or_no"] else "int"
    text = textwrap.indent(quoted(query["documentation"]), " " * 8).lstrip()
    return (f'    def {query["name"]}(self) -> {kind}:\n        """{text}\n        """\n'
            f'        return {kind}(self._ask("{query["function"]}"))\n')


def without_documentation(description):
    """What the packages need while they run."""
    return {"ramps": description["ramps"], **{
        key: [{k: v for k, v in each.items() if k != "documentation"} for each in description[key]]
        for key in ("operations", "queries")}}


def write_python(description, folder):
    methods = [python_method(o) for o in description["operations"]]
    methods += [python_query(q) for q in description["queries"]]
    enumerations = []
    for name, members in description["enumerations"].items():
        # The words that all members begin with are the enumeration's.
        words = [m.split("_") for m in members]
        common = len(words[0]) if len(words) == 1 else 0
        while all(len(w) > common + 1 and w[common] == words[0][common] for w in words):
            common += 1
        body = "".join(
            "    {} = {}  # {}\n".format(re.sub(r"^(\d)", r"N\1", "_".join(m.split("_")[common:])),
                                         value, doc)
            for m, (value, doc) in members.items())
        enumerations.append(f"class {name[3:]}(IntEnum):\n{body}")
    top = "# Generated by bindings/describe.py from the C header and `omb list --json`.\n"
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    imports = ("from __future__ import annotations\n\nfrom typing import TYPE_CHECKING, Literal\n\n"
               "if TYPE_CHECKING:\n    from ._image import Color, Image, KernelLike, Points, Size\n")
    (folder / "_operations.py").write_text(
        top + imports + "\n\n"
        "class Operations:\n"
        '    """Every operation as a method."""\n\n'
        "    def _run(self, name: str, given: dict[str, object]) -> Image:\n"
        "        raise NotImplementedError\n\n"
        "    def _ask(self, function: str) -> int:\n"
        "        raise NotImplementedError\n\n" + "\n".join(methods))
    (folder / "enumerations.py").write_text(
        top + '"""The C header\'s enumerations, for arguments that are numbers."""\n\n'
        "from enum import IntEnum\n\n\n" + "\n\n".join(enumerations))
    (folder / "operations.json").write_text(json.dumps(without_documentation(description)))
    (folder / "_version.py").write_text(top + f'version = "{description["version"]}"\n')


def js_type(parameter):
    names = [v["name"] for v in parameter.get("values", [])]
    types = {"integer": "number", "number": "number", "choice": "number", "color": "string",
             "text": {"size": "string | [number, number]",
                      "points": "string | [number, number][]"}.get(
                          parameter["name"], "string | number | Kernel")}
    return " | ".join(filter(None, [types[parameter["type"]]] + [json.dumps(n) for n in names]))


def write_js(description, folder):
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    top = "// Generated by bindings/describe.py from the C header and `omb list --json`.\n"
    small = json.dumps(without_documentation(description))
    (folder / "description.js").write_text(f"{top}export default {small};\n")
    methods = []
    for operation in description["operations"]:
        lines = [f"  /**\n   * {operation['summary']}.\n   *"]
        parameters = []
        for p in operation["parameters"]:
            lines.append(f"   * @param {p['name']} {p['help']} ({p['form']})")
            parameters.append(f"{p['name']}{'?' if 'default' in p else ''}: {js_type(p)}")
        depths = ", ".join(map(str, operation["depths"]))
        lines.append(f"   * Depths: {depths} bits per pixel.\n   */")
        names = "; ".join(parameters)
        options = all("default" in p for p in operation["parameters"])
        text = f"arguments_{'?' if options else ''}: {{ {names} }}" if parameters else ""
        methods.append("\n".join(lines) + f"\n  {operation['name']}({text}): this;")
    for query in description["queries"]:
        text = "\n".join("   * " + line for line in plain(query["documentation"]).split("\n"))
        kind = "boolean" if query["yes_or_no"] else "number"
        methods.append(f"  /**\n{text}\n   */\n  {query['name']}(): {kind};")
    (folder / "operations.d.ts").write_text(
        top + 'import type { Kernel } from "./index.js";\n\n' + "export interface Operations {\n" + "\n".join(methods) + "\n}\n")


def main():
    header, steps, ramps = (pathlib.Path(p).read_text(encoding="utf-8") for p in sys.argv[1:4])
    description = describe(header, json.loads(steps), ramps)
    if sys.argv[4] == "check":
        check(header, description)
    else:
        {"python": write_python, "js": write_js}[sys.argv[4]](description, sys.argv[5])


if __name__ == "__main__":
    main()
