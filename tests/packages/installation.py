"""An installation of the ordinary build for tests, and what it should contain.

BUILD names the build, SOURCE the project, CXX the compiler; the build's cache has the rest.
"""

import os
import re
import subprocess
import sys
from pathlib import Path

BUILD = Path(os.environ.get("BUILD") or sys.exit("BUILD must name the build"))
SOURCE = Path(os.environ["SOURCE"])
PAGES = (".md", ".json", ".toml", ".svg", ".png")


def cached(name):
    """A variable of the build."""
    return re.search(rf"^{name}:\w+=(.*)$", (BUILD / "CMakeCache.txt").read_text(), re.MULTILINE)[1]


def run(*command, **more):
    """Runs a command and returns its output; a command that fails shows it."""
    done = subprocess.run([str(word) for word in command], text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          check=False, **more)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))}: status {done.returncode}\n{done.stdout}")
    return done.stdout


VERSION = re.search(r"^project\(.* VERSION ([0-9.]+)", (SOURCE / "CMakeLists.txt").read_text(), re.MULTILINE)[1]
LIBRARIES = cached("CMAKE_INSTALL_LIBDIR")
PARTS = ["runtime", "development", "telephone", "python"]


def install(prefix, *arguments, **environment):
    """Installs everything below a prefix."""
    run("cmake", "--install", BUILD, "--prefix", prefix, *arguments, env={**os.environ, **environment})


def files_below(folder):
    """Every file, relative to the folder."""
    folder = Path(folder)
    return {str(file.relative_to(folder)) for file in folder.rglob("*") if not file.is_dir() or file.is_symlink()}


def headers():
    """The installed headers: those of both folders in the project, and what the build writes."""
    found = {f"include/communications-service/{file.name}" for file in (SOURCE / "include").glob("*.h")}
    for file in (SOURCE / "platform").rglob("*.h"):
        if "check" not in file.relative_to(SOURCE).parts:
            found.add(f"include/communications-service/{file.relative_to(SOURCE)}")
    if (SOURCE / "include/CommunicationsServiceVersion.h.in").exists():
        found.add("include/communications-service/CommunicationsServiceVersion.h")
    return found


def pages():
    """The installed pages, in the project's folders."""
    found = {f"share/doc/telephone/{name}" for name in ("README.md", "CHANGELOG.md", "SECURITY.md")}
    for file in (SOURCE / "docs").rglob("*"):
        if file.suffix in PAGES and not {"generator", "site"} & set(file.relative_to(SOURCE).parts):
            found.add(f"share/doc/telephone/{file.relative_to(SOURCE)}")
    return found


def expected(component):
    """The files of a component, relative to the prefix."""
    found = set()
    for line in (Path(__file__).parent / "files.txt").read_text().splitlines():
        if line.startswith(component + " "):
            found.add(line.split()[1].format(lib=LIBRARIES, version=VERSION, major=VERSION.split(".")[0],
                                             configuration=cached("CMAKE_BUILD_TYPE").lower()))
    found |= headers() if component == "development" else set()
    found |= pages() if component == "telephone" else set()
    if component == "python":
        found |= {f"lib/python3/dist-packages/{name}" for name in python_files()}
    return found


def python_files():
    """The client's modules, its plugin and its metadata, as the build folder has them."""
    folder = BUILD / "clients/python"
    names = {name for name in files_below(folder)
             if name.startswith(("telephone_client/", f"telephone_client-{VERSION}.dist-info/"))}
    return {name for name in names if "__pycache__" not in name} | {"pytest_telephone.py"}


def clean_environment(folder):
    """The environment of a user without files and settings."""
    kept = {name: os.environ[name] for name in ("LANG", "ASAN_OPTIONS") if name in os.environ}
    return {**kept, "PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "HOME": str(folder), "XDG_RUNTIME_DIR": str(folder)}
