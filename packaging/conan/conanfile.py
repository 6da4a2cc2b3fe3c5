"""Conan 2 recipe. It builds the source tree that contains it: conan create packaging/conan"""

import os

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy


class ZnUdf(ConanFile):
    name = "zn_udf"
    version = "1.1"
    description = "Utility library for command-line programs on Unix-like systems"
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"assertions": [True, False]}
    default_options = {"assertions": True}

    def export_sources(self):
        root = os.path.join(self.recipe_folder, "..", "..")
        for pattern in ("CMakeLists.txt", "CHANGELOG.md", "README.md", "cmake/*", "docs/*", "include/*", "src/*"):
            copy(self, pattern, root, self.export_sources_folder)

    def validate(self):
        check_min_cppstd(self, 17)

    def requirements(self):
        # A public header includes expat.h. The package editline contains libedit.
        self.requires("expat/[>=2.5 <3]", transitive_headers=True)
        self.requires("editline/3.1")

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["ZN_UDF_ASSERTIONS"] = bool(self.options.assertions)
        toolchain.cache_variables["ZN_UDF_EXAMPLES"] = False
        toolchain.cache_variables["ZN_UDF_TESTS"] = False
        toolchain.generate()
        CMakeDeps(self).generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "copyright", os.path.join(self.source_folder, "cmake", "debian"),
             os.path.join(self.package_folder, "licenses"))

    def package_info(self):
        self.cpp_info.libs = ["zn_udf"]
        self.cpp_info.includedirs = ["include/zn_udf"]
        self.cpp_info.set_property("cmake_file_name", "zn_udf")
        self.cpp_info.set_property("cmake_target_name", "zn_udf::zn_udf")
        self.cpp_info.set_property("pkg_config_name", "zn_udf")
