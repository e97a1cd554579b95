"""What the packages of a release hold, as SPDX 2.3: sbom.py VERSION FOLDER, to standard output."""

import datetime
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys

# Debian package -> (name, license, which of the release's files hold it, and how).
STATIC = re.compile(r"ombrilo-tools_.*\.deb|.*-linux-x86_64\.tar\.gz|.*-windows-x64\.zip")
DYNAMIC = re.compile(r"ombrilo-tools_.*\.deb|.*-linux-x86_64\.tar\.gz")
MINGW = re.compile(r".*-windows-.*\.zip|.*\.nupkg")
WASM = re.compile(r".*\.tgz")
PARTS = {
    "libcli11-dev": ("CLI11", "BSD-3-Clause", STATIC, "STATIC_LINK"),
    "nlohmann-json3-dev": ("nlohmann-json", "MIT", STATIC, "STATIC_LINK"),
    "libpng-dev": ("libpng", "libpng-2.0", DYNAMIC, "DYNAMIC_LINK"),
    "libjpeg62-turbo-dev": ("libjpeg-turbo", "IJG AND BSD-3-Clause AND Zlib", DYNAMIC, "DYNAMIC_LINK"),
    "libtiff-dev": ("libtiff", "libtiff", DYNAMIC, "DYNAMIC_LINK"),
    "libexif-dev": ("libexif", "LGPL-2.1-or-later", DYNAMIC, "DYNAMIC_LINK"),
    "g++-mingw-w64-x86-64-posix": ("gcc-runtime", "GPL-3.0-or-later WITH GCC-exception-3.1", MINGW,
                                   "STATIC_LINK"),
    "mingw-w64-x86-64-dev": ("mingw-w64-runtime", "ZPL-2.1", MINGW, "STATIC_LINK"),
    "wasi-libc": ("wasi-libc", "MIT AND Apache-2.0 WITH LLVM-exception", WASM, "STATIC_LINK"),
}


def identifier(name):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.]+", "-", name)


def package(name, version, license, **more):
    return {"SPDXID": identifier(f"{name}-{version}" if more.get("sourceInfo") else name),
            "name": name, "versionInfo": version, "downloadLocation": "NOASSERTION",
            "filesAnalyzed": False, "licenseConcluded": license, "licenseDeclared": license,
            "copyrightText": "NOASSERTION", **more}


def main():
    version, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    time = datetime.datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), datetime.timezone.utc)
    files = sorted(p for p in folder.iterdir() if p.is_file() and not p.name.endswith(".spdx.json"))
    packages, relations, sums = [], [], hashlib.sha256()
    for path in files:
        digest = hashlib.sha256(path.read_bytes()).hexdigest()
        sums.update(digest.encode())
        packages.append(package(path.name, version, "MIT", packageFileName=path.name, supplier="NOASSERTION",
                                checksums=[{"algorithm": "SHA256", "checksumValue": digest}]))
        relations.append(("SPDXRef-DOCUMENT", "DESCRIBES", packages[-1]["SPDXID"]))
    for debian, (name, license, held_by, how) in PARTS.items():
        holders = [path.name for path in files if held_by.fullmatch(path.name)]
        if not holders:
            continue
        installed = subprocess.check_output(["dpkg-query", "-W", "-f", "${Version}", debian], text=True)
        part = package(name, installed, license, sourceInfo=f"Debian's {debian} {installed}",
                       supplier="Organization: Debian")
        packages.append(part)
        relations += [(identifier(holder), how, part["SPDXID"]) for holder in holders]
    json.dump({
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"ombrilo-{version}",
        # Unique for these files, as the format asks; it leads nowhere.
        "documentNamespace": f"urn:ombrilo:{version}:{sums.hexdigest()}",
        "creationInfo": {"created": time.strftime("%Y-%m-%dT%H:%M:%SZ"),
                         "creators": ["Tool: ombrilo-sbom", "Organization: The Ombrilo authors"]},
        "packages": packages,
        "relationships": [{"spdxElementId": a, "relationshipType": how, "relatedSpdxElement": b}
                          for a, how, b in relations],
    }, sys.stdout, indent=1)
    print()


main()
