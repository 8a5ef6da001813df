"""Recipe for Conan 2: conan create packaging/conan"""

import os
import re

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load, rmdir


class NuConan(ConanFile):
    name = "nu"
    license = "MIT"
    description = "Numerical mathematics and 3-D geometry for dimensional metrology"
    topics = ("metrology", "geometry", "fitting", "least-squares", "minimum-zone")
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False], "fPIC": [True, False]}
    default_options = {"shared": True, "fPIC": True}
    implements = ["auto_shared_fpic"]

    # The recipe lies in the sources, two folders down.
    def _root(self):
        return os.path.normpath(os.path.join(self.recipe_folder, "..", ".."))

    def set_version(self):
        project = load(self, os.path.join(self._root(), "CMakeLists.txt"))
        self.version = re.search(r"project\(Nu VERSION ([0-9.]+)", project).group(1)

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "LICENSE", "cmake/*", "src/*"):
            copy(self, pattern, self._root(), self.export_sources_folder)

    def validate(self):
        if self.settings.get_safe("compiler.cppstd"):
            check_min_cppstd(self, 17)

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        # The sources choose their standard, C++20, which hosts need not have.
        toolchain.blocks.remove("cppstd")
        toolchain.user_presets_path = False
        for part in ("TESTS", "EXAMPLES", "SELFTEST", "BENCHMARKS"):
            toolchain.cache_variables[f"NU_BUILD_{part}"] = False
        toolchain.cache_variables["NU_WARNINGS_AS_ERRORS"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))
        for folder in (("lib", "cmake"), ("lib", "pkgconfig")):
            rmdir(self, os.path.join(self.package_folder, *folder))

    def package_info(self):
        self.cpp_info.libs = ["nu"]
        self.cpp_info.set_property("cmake_file_name", "Nu")
        self.cpp_info.set_property("cmake_target_name", "Nu::nu")
        self.cpp_info.set_property("pkg_config_name", "nu")
        if not self.options.shared:
            self.cpp_info.defines = ["NU_STATIC"]
        if self.settings.os in ("Linux", "FreeBSD"):
            self.cpp_info.system_libs = ["m"]
