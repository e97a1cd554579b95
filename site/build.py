"""The documentation site, from the pages in docs/, the header, `omb list` and examples/.

    build.py BUILD OUT [--pictures INPUTS] [--playground FOLDER]

BUILD is a build directory that holds omb. INPUTS has photo.jpg, page.png and photographed.png, which
examples and steps are run on for their pictures; without it there are none. Every link of the result
is followed, and every code sample on a page must stand in examples/: exit status 1 tells of those
that lead nowhere or were written by hand, 77 that modules are missing.

In a page, a paragraph that is a link to a file of examples/ becomes the file's text, and
<!-- pictures of examples/NAME.sh: FILE FILE ... : STEP ... --> what the script makes of its inputs,
each file after STEPs.
"""

import argparse
import html
import html.parser
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

try:
    import markdown
    from pygments.formatters import HtmlFormatter
except ImportError as error:
    print(f"skipped: {error} (scripts/setup.sh docs)")
    sys.exit(77)

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "bindings"))
import describe  # noqa: E402

# Sections of the navigation: source of a page, or the page of a name that is made here.
PAGES = {
    "Start": ["README.md", "docs/start.md", "docs/install.md"],
    "Guides": ["docs/guides/clean-a-scan.md", "docs/guides/even-light.md",
               "docs/guides/thumbnails.md", "docs/guides/palettes.md",
               "docs/guides/other-languages.md", "docs/guides/many-files.md",
               "docs/guides/all-cores.md"],
    "Reference": ["operations", "reference", "docs/pictures.md", "docs/command-line.md",
                  "docs/windows.md"],
    "Trust": ["docs/performance.md", "docs/quality.md", "docs/reliability.md", "SECURITY.md"],
    "Project": ["docs/architecture.md", "CONTRIBUTING.md", "CHANGELOG.md"],
}
MADE = {"operations": ("Operations", "operations/index.html"),
        "reference": ("C interface", "reference/index.html")}
CREDIT = ('<p><sub>The photograph is by Trevor “Freespace”, 2018, <a href="https://creativecommons.org/'
          'licenses/by/4.0/">CC BY 4.0</a>; changed by Ombrilo as the page says.</sub></p>\n')
LANGUAGES = {".c": "c", ".cpp": "cpp", ".py": "python", ".sh": "sh", ".mjs": "javascript",
             ".cs": "csharp", ".dpr": "pascal"}
# Blocks of other languages show what is no program.
TESTED = set(LANGUAGES.values()) | {"js", "cmake"}
# Steps that share a C function with others.
FUNCTIONS = describe.FUNCTIONS | {step: "omb_EnhancePage" for step in
                                  ("whiten", "stretch", "equalize", "logarithm")}
FUNCTIONS["truecolor"] = "omb_transformat"


def slug(text):
    return re.sub(r"[^a-z0-9]+", "-", text.lower()).strip("-")


def flush_left(text):
    return re.sub(r"^ +", "", text, flags=re.M)


def place_of(source):
    """Where the page of a Markdown file goes."""
    if source in MADE:
        return MADE[source][1]
    if source == "README.md":
        return "index.html"
    return str(pathlib.PurePath(source.removeprefix("docs/")).with_suffix(".html")).lower()


class Site:
    def __init__(self, build, out, inputs, playground):
        self.omb, self.out, self.inputs = build / "omb", out, inputs
        self.playground = playground
        self.problems = []
        shutil.rmtree(out, ignore_errors=True)
        out.mkdir(parents=True)
        self.template = (ROOT / "site/page.html").read_text()
        self.samples = "\n".join(flush_left(path.read_text())
                                 for path in sorted((ROOT / "examples").iterdir()))
        self.sources = [s for pages in PAGES.values() for s in pages]
        self.titles = {s: MADE[s][0] if s in MADE else self.title_of(s) for s in self.sources}
        self.steps = json.loads(subprocess.check_output([self.omb, "list", "--json"]))["steps"]
        self.header = (ROOT / "include/ombrilo/ombrilo.h").read_text()
        style = (ROOT / "site/style.css").read_text()
        dark = HtmlFormatter(style="github-dark").get_style_defs(".codehilite")
        style += HtmlFormatter(style="default").get_style_defs(".codehilite")
        style += "\n@media (prefers-color-scheme: dark) {\n" + dark + "\n}\n"
        (out / "style.css").write_text(style)

    @staticmethod
    def title_of(source):
        return re.search(r"^# (.*)", (ROOT / source).read_text(), re.M)[1]

    def write(self, place, title, body, source=None):
        """Puts a page's body into the frame of all pages."""
        def href(target):
            return os.path.relpath(target, os.path.dirname(place) or ".")
        nav = ""
        for section, sources in PAGES.items():
            nav += f"<h2>{section}</h2>\n<ul>\n"
            for s in sources:
                here = ' aria-current="page"' if place_of(s) == place else ""
                nav += f'<li><a href="{href(place_of(s))}"{here}>{html.escape(self.titles[s])}</a></li>\n'
            if section == "Start" and self.playground:
                nav += f'<li><a href="{href("playground.html")}">Playground</a></li>\n'
            nav += "</ul>\n"
        if place == "operations/index.html" or re.search("shown/(input-photo|thumb|palette)", body):
            body += CREDIT
        body = re.sub(r"<table[ >].*?</table>", r'<div class="wide">\g<0></div>', body, flags=re.S)
        page = self.template.replace("{title}", html.escape(re.sub("[`]", "", title)))
        page = page.replace("{home}", href("index.html")).replace("{style}", href("style.css"))
        page = page.replace("{nav}", nav).replace("{body}", self.link_functions(body, href))
        path = self.out / place
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(page)

    def link_functions(self, body, href):
        """Names of the interface in code lead to their documentation."""
        def link(match):
            target = self.anchors.get(match[1])
            return f'<a href="{href(target)}">{match[0]}</a>' if target else match[0]
        return re.sub(r"<code>((?:omb_|OMB_|Omb|KERNAL)\w*)(\([^<]*\))?</code>(?!</a>)", link, body)

    def file(self, source, place):
        """The link from a page to a file that is no page; the file comes along."""
        target = self.out / "files" / source
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(ROOT / source, target)
        return os.path.relpath(target, (self.out / place).parent)

    def page(self, source):
        place = place_of(source)
        text = (ROOT / source).read_text()
        for language, code in re.findall(r"^```(\w+)\n(.*?)^```", text, re.M | re.S):
            # Commands stand on their own.
            parts = code.splitlines() if language == "sh" else [code]
            if language in TESTED and not all(flush_left(part) in self.samples for part in parts):
                self.problems.append(f"{source}: in no file of examples/:\n{code}")

        def sample(match):
            path = ROOT / os.path.normpath(os.path.join(os.path.dirname(source), match[1]))
            return f"```{LANGUAGES[path.suffix]}\n{path.read_text()}```\n"
        text = re.sub(r"^\[[^\]]*\]\(([^)]*examples/[^)]*\.\w+)\)$", sample, text, flags=re.M)
        text = re.sub(r"<!-- pictures of (\S+?): (.*?)(?: : (.*?))? -->",
                      lambda m: self.pictures_of(m[1], m[2].split(), (m[3] or "").split(), place), text)
        text = text.replace("<details>", '<details markdown="1">')
        body = markdown.markdown(text, extensions=["tables", "fenced_code", "codehilite", "toc",
                                                   "sane_lists", "md_in_html"],
                                 extension_configs={"codehilite": {"guess_lang": False}})

        def link(match):
            target, _, anchor = html.unescape(match[2]).partition("#")
            if not target or re.match(r"\w+:", target):
                return match[0]
            path = os.path.normpath(os.path.join(os.path.dirname(source), target))
            if path == "include/ombrilo/ombrilo.h":
                path = "reference"
            if path in self.sources:
                to = os.path.relpath(place_of(path), os.path.dirname(place) or ".")
            elif (ROOT / path).is_file():
                to = self.file(path, place)
            else:
                to = target  # the check below tells of it
            return f'{match[1]}="{html.escape(to + ("#" + anchor if anchor else ""))}"'
        self.write(place, self.titles[source], re.sub(r'\b(href|src)="([^"]*)"', link, body))

    def show(self, image, name, steps=()):
        """A picture of the site, of an image after steps."""
        folder = self.out / "shown"
        folder.mkdir(exist_ok=True)
        png, jpg = folder / f"{name}.png", folder / f"{name}.jpg"
        for path in (png, jpg):
            subprocess.run([self.omb, "apply", "-q", image, path, *steps], check=True)
        larger = png if png.stat().st_size > 1.2 * jpg.stat().st_size else jpg
        larger.unlink()
        return (jpg if larger is png else png).relative_to(self.out)

    def pictures_of(self, script, files, steps, place):
        if not self.inputs:
            return ""
        with tempfile.TemporaryDirectory() as folder:
            work = pathlib.Path(folder)
            (work / "photos").mkdir()
            for name, source in (("photo.jpg", "photo.jpg"), ("photos/photo.jpg", "photo.jpg"),
                                 ("scan.png", "page.png"), ("photographed.png", "photographed.png")):
                shutil.copyfile(self.inputs / source, work / name)
            env = dict(os.environ, PATH=f"{self.omb.parent.resolve()}:{os.environ['PATH']}")
            subprocess.run(["sh", "-e", ROOT / script], cwd=work, env=env, check=True,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            figures = ""
            for file in files:
                shown = self.show(work / file, slug(f"{pathlib.Path(script).stem} {file}"), steps)
                to = os.path.relpath(shown, os.path.dirname(place) or ".")
                figures += (f'<figure><img src="{to}" alt="{file}" loading="lazy">'
                            f"<figcaption>{file}</figcaption></figure>")
        return f'<div class="figures">{figures}</div>'

    def reference(self):
        """Doxygen's pages of the header, in the frame of this site."""
        work = self.out / "reference"
        work.mkdir()
        result = subprocess.run(["doxygen", "docs/Doxyfile"], cwd=ROOT, capture_output=True, text=True,
                                env=dict(os.environ, OUTPUT=str(work.resolve())))
        if result.returncode != 0:
            sys.exit(result.stderr)
        self.anchors = {}
        tags = xml.etree.ElementTree.parse(work / "ombrilo.tag").getroot()
        for member in tags.iter("member"):
            self.anchors[member.findtext("name")] = "reference/{}#{}".format(
                member.findtext("anchorfile"), member.findtext("anchor"))
        for compound in tags.iter("compound"):
            if compound.get("kind") == "struct":
                self.anchors[compound.findtext("name")] = "reference/" + compound.findtext("filename")
        self.bodies = {}
        for path in sorted((work / "html").glob("*.html")):
            if not re.match(r"(group__|struct|ombrilo_8h\.)", path.name):
                continue
            text = path.read_text()
            title = re.search(r'<div class="title">(.*?)</div>', text, re.S)[1].split("<div")[0]
            body = re.search(r'<div class="contents">(.*)</div><!-- contents -->', text, re.S)[1]
            if path.name == "ombrilo_8h.html":
                title, body = "The contract of an image", body[body.index('<a name="details"'):]
            # No list of source files, and no second page for each member.
            body = body.replace('<h2 class="groupheader">Detailed Description</h2>', "")
            for kind in ("Macro Definition", "Enumeration Type", "Typedef", "Function", "Field"):
                body = body.replace(f"{kind} Documentation</h2>", kind.split()[0] + "s</h2>")
            body = re.sub(r'<a class="el" href="([^"]*)"', self.keep_known, body)
            body = re.sub(r"<a href=\"ombrilo_8h_source[^>]*>(.*?)</a>", r"\1", body)
            body = body.replace("docs/pictures.md", '<a href="../pictures.html">drawings</a>')
            body = re.sub(r'<div class="line">.*?</div>', lambda m: re.sub("</?a.*?>", "", m[0]), body)
            self.bodies[path.name] = (re.sub("<.*?>", "", title), body)
        groups = tags.findall("compound[@kind='group']")
        entries = "".join(
            '<h2><a href="{}">{}</a></h2>\n<p>{}</p>\n'.format(
                g.findtext("filename"), html.escape(g.findtext("title")),
                " ".join(f"<code>{m.findtext('name')}</code>" for m in g.findall("member")
                         if m.get("kind") == "function")) for g in groups)
        self.bodies["index.html"] = ("C interface", (
            '<p>Every function, by family. <a href="ombrilo_8h.html">The contract of an image</a> holds '
            "for all of them: what a block is, results, ownership, and the rules for unusual images. "
            '<a href="../pictures.html">Drawings</a> show it, and <a href="../operations/index.html">'
            "pictures of all operations</a> what they do.</p>\n" + entries))
        shutil.rmtree(work)
        for name, (title, body) in self.bodies.items():
            self.write(f"reference/{name}", title, f"<h1>{html.escape(title)}</h1>\n"
                       f'<div class="doxygen">{body}</div>')

    @staticmethod
    def keep_known(match):
        known = re.match(r"(group__|struct|ombrilo_8h\.html|#)", match[1])
        return match[0] if known else '<a class="el"'

    def operations(self):
        """A page for each family of steps, with a picture of each."""
        functions = {name.lower(): name for name in describe.functions_of(self.header)}
        inputs = {}
        if self.inputs:
            inputs["photo"] = (self.inputs / "photo.jpg", ["resize=640x480"])
            inputs["page"] = (self.inputs / "page.png", ["crop=560,520,1199,999"])
            inputs["light"] = (self.inputs / "photographed.png", ["resize=640x"])
        shown = {key: self.show(path, f"input-{key}", steps) for key, (path, steps) in inputs.items()}
        index = "<h1>Operations</h1>\n<p>What each step does to an image, by family. Steps run by " \
                "<code>omb apply</code>; in Python and JavaScript they are methods of the same names, " \
                "and each has its function of the C interface.</p>\n"
        families = {}
        for step in self.steps:
            families.setdefault(step["family"].replace("&", ""), []).append(step)
        for family, steps in families.items():
            place = f"operations/{slug(family)}.html"
            body = f'<p><a href="index.html">Operations</a></p>\n<h1>{family}</h1>\n'
            index += f'<h2><a href="{slug(family)}.html">{family}</a></h2>\n<div class="cards">\n'
            for step in steps:
                name, pictures = step["name"], ""
                key = "photo" if family != "Pages" else \
                    "light" if {"auto"} & {e.split("=")[-1] for e in step["examples"]} else "page"
                for number, example in enumerate(step["examples"] if inputs else []):
                    path, before = inputs[key]
                    if step.get("before"):
                        before = [*before, step["before"]]
                    after = self.show(path, f"{name}-{number}", [*before, example])
                    if number == 0:
                        pictures += (f'<figure><img src="../{shown[key]}" alt="before" loading="lazy">'
                                     "<figcaption>before</figcaption></figure>")
                        index_picture = f'<img src="../{after}" alt="" loading="lazy">'
                    pictures += (f'<figure><img src="../{after}" alt="after {html.escape(example)}" '
                                 f'loading="lazy"><figcaption><code>{html.escape(example)}</code>'
                                 "</figcaption></figure>")
                index += (f'<a class="card" href="{slug(family)}.html#{name}">'
                          f'{index_picture if inputs else ""}<b>{html.escape(step["title"].replace("&", ""))}</b>'
                          f'<span>{html.escape(step["summary"])}</span></a>\n')
                function = FUNCTIONS.get(name) or functions.get("omb_" + name)
                depths = ", ".join(map(str, step["depths"]))
                body += (f'<h2 id="{name}">{html.escape(step["title"].replace("&", ""))}</h2>\n'
                         f"<p>{html.escape(step['summary'])}.</p>\n"
                         f'<div class="figures">{pictures}</div>\n'
                         f"<p><code>{html.escape(step['usage'])}</code> · {depths} bits per pixel")
                if function:
                    body += f" · C: <code>{function}()</code>"
                body += "</p>\n"
                if step["parameters"]:
                    body += "<table><tr><th>argument</th><th>meaning</th><th>default</th></tr>\n"
                    for p in step["parameters"]:
                        default = html.escape(str(p["default"])) if "default" in p else ""
                        body += (f"<tr><td>{p['name']}</td><td>{html.escape(p['help'])}: "
                                 f"{html.escape(p['form'])}</td><td>{default}</td></tr>\n")
                    body += "</table>\n"
                if step.get("note"):
                    body += f"<p>{html.escape(step['note'])}</p>\n"
            index += "</div>\n"
            self.write(place, family, body)
        self.write("operations/index.html", "Operations", index)

    def play(self):
        shutil.copytree(self.playground, self.out / "playground")
        self.write("playground.html", "Playground", (
            "<h1>Playground</h1>\n<p>Every operation on your own pictures, in this browser: nothing "
            "leaves the machine.</p>\n<p><a href=\"playground/index.html\">Open the playground</a></p>\n"
            "<p>Browsers load its modules from a server alone, not from files. Where these pages are "
            "files, <code>./dev playground</code> serves it.</p>"))

    def check(self):
        """Follows every link between pages."""
        ids, links = {}, []
        for path in self.out.rglob("*.html"):
            if "playground" in path.relative_to(self.out).parts[:-1]:
                continue
            parser = Links()
            parser.feed(path.read_text())
            ids[path.resolve()] = parser.ids
            links += [(path, link) for link in parser.links]
        for path, link in links:
            if re.match(r"\w+:", link):
                continue
            target, _, anchor = link.partition("#")
            to = (path.parent / target).resolve() if target else path.resolve()
            if not to.exists():
                self.problems.append(f"{path.relative_to(self.out)}: no {link}")
            elif anchor and to in ids and anchor not in ids[to]:
                self.problems.append(f"{path.relative_to(self.out)}: no anchor {link}")
        print(f"{len(ids)} pages, {len(links)} links")


class Links(html.parser.HTMLParser):
    def __init__(self):
        super().__init__()
        self.ids, self.links = set(), []

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("id", "name"):
                self.ids.add(value)
            elif name in ("href", "src"):
                self.links.append(value)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("out", type=pathlib.Path)
    parser.add_argument("--pictures", type=pathlib.Path)
    parser.add_argument("--playground", type=pathlib.Path)
    arguments = parser.parse_args()
    site = Site(arguments.build.resolve(), arguments.out.resolve(), arguments.pictures,
                arguments.playground)
    site.reference()
    site.operations()
    for source in site.sources:
        if source not in MADE:
            site.page(source)
    if site.playground:
        site.play()
    site.check()
    if site.problems:
        sys.exit("\n".join(site.problems))


main()
