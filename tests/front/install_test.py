#!/usr/bin/env python3
"""Installs a build into a directory of its own and uses it from there: pkg-config, the CMake
package, the installed command.

    install_test.py BUILD_DIRECTORY C_CLIENT
"""
import glob
import os
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "packaging"))
sys.dont_write_bytecode = True
from documents import broken_links  # noqa: E402

build, client = sys.argv[1:]

CMAKE_LISTS = """
cmake_minimum_required(VERSION 3.25)
project(user C)
find_package(kestra 0.1 REQUIRED)
add_executable(user {client})
target_link_libraries(user PRIVATE kestra::kestra)
"""


def run(*command, **more):
    return subprocess.run(command, check=True, capture_output=True, text=True, timeout=120,
                          **more).stdout


def check_pkg_config(root, library_folder):
    environment = dict(os.environ, PKG_CONFIG_PATH=os.path.join(library_folder, "pkgconfig"))
    flags = run("pkg-config", "--cflags", "--libs", "kestra", env=environment).split()
    program = os.path.join(root, "by_pkg_config")
    run("cc", client, "-o", program, *flags, "-Wl,-rpath," + library_folder)
    run(program)


def check_cmake_package(root):
    source = os.path.join(root, "user")
    os.mkdir(source)
    with open(os.path.join(source, "CMakeLists.txt"), "w") as lists:
        lists.write(CMAKE_LISTS.format(client=client))
    run("cmake", "-S", source, "-B", source + "/build", "-G", "Ninja",
        "-DCMAKE_PREFIX_PATH=" + os.path.join(root, "prefix"))
    run("cmake", "--build", source + "/build")
    run(source + "/build/user")


with tempfile.TemporaryDirectory() as root:
    prefix = os.path.join(root, "prefix")
    run("cmake", "--install", build, "--prefix", prefix)
    library, = glob.glob(prefix + "/lib*/**/libkestra.so", recursive=True)
    check_pkg_config(root, os.path.dirname(library))
    check_cmake_package(root)
    assert run(prefix + "/bin/kestra", "1 + 1") == "2\n"
    documents = prefix + "/share/doc/kestra"
    assert os.path.exists(documents + "/README.md")
    assert not broken_links(documents), broken_links(documents)
    # The whole tree may be moved.
    os.rename(prefix, prefix + "2")
    assert run(prefix + "2/bin/kestra", "1 + 1") == "2\n"
    modules = os.path.join(prefix + "2", "lib", "python3", "dist-packages")
    environment = {"PYTHONPATH": modules, "PYTHONDONTWRITEBYTECODE": "1"}
    assert run(sys.executable, "-c", "import kestra; print(kestra.Session().value('1 + 1'))",
               env=environment) == "2\n"
