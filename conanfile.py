# SPDX-License-Identifier: Apache-2.0
"""Recipe for Conan 2: the libraries and the program, with the dependencies that vcpkg.json names too."""
import os
import re

from conan import ConanFile
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load
from conan.tools.gnu import PkgConfigDeps

required_conan_version = ">=2.8"


class OxaIfc(ConanFile):
    name = "oxaifc"
    license = "Apache-2.0"
    description = "Holds an IFC building model in memory and moves it to and from STEP files"
    settings = "os", "compiler", "build_type", "arch"
    options = {"shared": [True, False], "fPIC": [True, False]}
    default_options = {"shared": False, "fPIC": True}
    exports_sources = ("CMakeLists.txt", "LICENSE", "README.md", "CHANGELOG.md", "cmake/*", "src/*", "schemas/*",
                       "tools/*")

    def set_version(self):
        text = load(self, "CMakeLists.txt")
        self.version = re.search(r"project\(OxaIfc VERSION ([0-9.]+)", text).group(1)

    def config_options(self):
        if self.settings.os == "Windows":
            del self.options.fPIC

    def configure(self):
        if self.options.shared:
            self.options.rm_safe("fPIC")

    def layout(self):
        cmake_layout(self)

    def requirements(self):
        self.requires("cli11/[>=2.1 <3]")
        self.requires("date/[>=3.0 <4]")
        self.requires("fast_float/[>=8.0 <9]")
        self.requires("fmt/[>=9.1]")
        self.requires("inja/[>=3.4 <4]")
        self.requires("libzip/[>=1.7 <2]")
        self.requires("nlohmann_json/[>=3.11 <4]")
        self.requires("pugixml/[>=1.13 <2]")
        self.requires("re2/[>=20220601]")
        self.requires("sqlite3/[>=3.40 <4]")
        self.requires("libxlsxwriter/[>=1.1 <2]")
        self.requires("utfcpp/[>=3.2 <5]")
        self.requires("zlib/[>=1.2.11 <2]")

    def build_requirements(self):
        self.tool_requires("pkgconf/[>=2.0 <3]")
        self.test_requires("gtest/[>=1.12 <2]")
        self.test_requires("rapidcheck/[*]")

    def generate(self):
        CMakeDeps(self).generate()
        modules = PkgConfigDeps(self)
        modules.set_property("libxlsxwriter", "pkg_config_name", "xlsxwriter")   # as its own build calls it
        modules.generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["OXA_BUILD_TESTS"] = False
        toolchain.cache_variables["OXA_BUILD_EXAMPLES"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))

    def package_info(self):
        # The package brings its own CMake configuration, with the same targets as an installation by hand.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = ["lib/cmake/OxaIfc"]
