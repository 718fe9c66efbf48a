# Recipe for Conan 2: conan create packaging/conan
import os

from conan import ConanFile
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy


class NqKorvoWebConan(ConanFile):
    name = "nqkorvoweb"
    version = "1.0.0"
    description = "Client library for a cloud platform of sewer-inspection projects"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False], "fPIC": [True, False]}
    default_options = {"shared": True, "fPIC": True, "qt/*:shared": True}
    requires = "qt/[>=5.15 <6]"
    package_type = "library"

    def export_sources(self):
        root = os.path.join(self.recipe_folder, "..", "..")
        for pattern in ("CMakeLists.txt", "README.md", "CHANGELOG.md", "cmake/*", "src/*", "docs/*", "examples/*"):
            copy(self, pattern, src=root, dst=self.export_sources_folder)

    def config_options(self):
        if self.settings.os == "Windows":
            del self.options.fPIC

    def layout(self):
        cmake_layout(self)

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["KORVOWEB_BUILD_TESTS"] = False
        toolchain.cache_variables["KORVOWEB_BUILD_TOOLS"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        # The package brings its own CMake files; they know the targets and what they need.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = ["lib/cmake/NQKorvoWeb"]
        self.cpp_info.set_property("pkg_config_name", "none")
