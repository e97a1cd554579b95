"""Conan 2: conan create packaging/conan"""

import os
import re

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load


class Ombrilo(ConanFile):
    name = "ombrilo"
    description = "Image processing on packed device-independent bitmaps"
    license = "MIT"
    topics = ("image-processing", "bitmap", "scanning")
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False]}
    default_options = {"shared": True}

    def _root(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        text = load(self, os.path.join(self._root(), "CMakeLists.txt"))
        self.version = re.search(r"project\(ombrilo VERSION ([\d.]+)", text)[1]

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "LICENSE", "cmake/*", "examples/*", "include/*", "src/*"):
            copy(self, pattern, self._root(), self.export_sources_folder)

    def layout(self):
        cmake_layout(self)

    def validate(self):
        check_min_cppstd(self, 20)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["OMBRILO_TOOLS"] = False
        toolchain.cache_variables["OMBRILO_TESTS"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "ombrilo")
        self.cpp_info.set_property("cmake_target_name",
                                   "ombrilo::ombrilo" if self.options.shared else "ombrilo::static")
        self.cpp_info.libs = ["ombrilo"]
        if not self.options.shared and self.settings.os != "Windows":
            self.cpp_info.system_libs = ["m"]
