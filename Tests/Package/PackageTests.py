"""Builds and runs a host outside the tree, as its developers would.

    PackageTests.py <test> --source <tree> --build <its build> --work <folder> --cmake <cmake> --compiler <c++>
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

RECORDS_OF_THE_HOST = 8  # one for each log call in Examples/Host/main.cpp

RECORDS_OF_THE_OBJECTIVE_C_HOST = 5
HEADERS_FOR_BINDINGS = ["Capture/Capture.h", "Facade/CaptureConnection.h", "Platform/FatalError.h"]


class Failure(Exception):
    pass


def run(*command, environment=None, expect_success=True):
    """Runs it; returns its output. Fails with that output when it ends otherwise than expected."""
    done = subprocess.run([str(word) for word in command], env=environment, text=True, check=False,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if (done.returncode == 0) != expect_success:
        raise Failure(f"{' '.join(map(str, command))}\nended with {done.returncode}:\n{done.stdout}")
    return done.stdout


class PackageTests:
    def __init__(self, given, scratch):
        self.source, self.build, self.work = Path(given.source), Path(given.build), Path(given.work)
        self.cmake, self.compiler = given.cmake, given.compiler
        self.prefix = self.work / "prefix"
        self.scratch = scratch

    # --- The tests

    def Install(self):
        """Installed in one place and moved to another: nothing in the package knows where it was."""
        shutil.rmtree(self.work, ignore_errors=True)
        run(self.cmake, "--install", self.build, "--prefix", self.work / "elsewhere")
        (self.work / "elsewhere").rename(self.prefix)

    def CMakeShared(self):
        host = self.build_with_cmake(self.prefix)
        self.expect("libTallyfoot.so" in run("readelf", "--dynamic", host), "the host does not use the shared library")
        self.run_host(host)

    def CMakeStatic(self):
        host = self.build_with_cmake(self.prefix, "-DHOST_STATIC=ON")
        self.expect("libTallyfoot" not in run("readelf", "--dynamic", host), "the host still wants the shared library")
        self.run_host(host)

    def CMakeRefusesAnotherMinorVersion(self):
        project = self.copy_of_the_host()
        text = (project / "CMakeLists.txt").read_text(encoding="utf-8")
        (project / "CMakeLists.txt").write_text(text.replace("Tallyfoot 0.1", "Tallyfoot 0.0.9"), encoding="utf-8")
        output = self.configure(project, self.prefix, expect_success=False)
        self.expect("compatible with requested version" in output, output)

    def PkgConfigShared(self):
        host = self.build_with_pkg_config("--cflags", "--libs")
        self.run_host(host, LD_LIBRARY_PATH=self.libraries())

    def PkgConfigStatic(self):
        host = self.build_with_pkg_config("--cflags", "--static", "--libs", archive=True)
        self.expect("libTallyfoot" not in run("readelf", "--dynamic", host), "the host still wants the shared library")
        self.run_host(host)

    def ObjectiveC(self):
        """In plain Objective-C, whatever compiles the C++."""
        project = Path(shutil.copytree(self.source / "Examples/ObjCHost", self.scratch / "ObjCHost"))
        self.configure(project, self.prefix, f"-DCMAKE_OBJC_COMPILER={shutil.which('clang')}")
        run(self.cmake, "--build", self.scratch / "build")
        host = self.scratch / "build/ObjCHost"
        self.expect("libTallyfootObjC.so" in run("readelf", "--dynamic", host), "the host does not use the library")
        self.run_host(host, ends="token token-1, path no such path\n", records=RECORDS_OF_THE_OBJECTIVE_C_HOST)

    def ExportsOnlyItsClasses(self):
        symbols = run("nm", "--dynamic", "--defined-only", self.libraries() / "libTallyfootObjC.so")
        names = {line.split()[2] for line in symbols.splitlines()}
        classes = {f"__objc_class_name_{name}"
                   for name in ("ApplicationInfo", "Authentication", "Environment", "Tallyfoot", "UploadConfiguration")}
        blocks = {"_Block_copy", "_Block_object_assign", "_Block_object_dispose", "_Block_release"}
        self.expect(names == classes | blocks, f"exported: {sorted(names)}")

    def FetchContent(self):
        shutil.copytree(self.source / "Examples", self.scratch / "Examples")
        folder = self.scratch / "build"
        run(self.cmake, "-S", self.scratch / "Examples/FetchContent", "-B", folder, "-G", "Ninja",
            f"-DCMAKE_CXX_COMPILER={self.compiler}", f"-DFETCHCONTENT_SOURCE_DIR_TALLYFOOT={self.source}",
            *self.launcher())
        run(self.cmake, "--build", folder)
        built = [path.name for path in folder.rglob("*") if path.is_file()]
        self.expect("tallyfoot" not in built and not any(name.endswith("Tests") for name in built),
                    "tools or tests were built into the host's build")
        self.run_host(folder / "Host")

    def ExportsOnlyThePublicInterface(self):
        """Every exported symbol belongs to a class or function that a header marks: an installed one, or
        one for the library's own bindings, which are libraries of their own."""
        for_bindings = [self.source / "Sources/Tallyfoot" / name for name in HEADERS_FOR_BINDINGS]
        headers = "".join(path.read_text(encoding="utf-8") for path in [*self.installed_headers(), *for_bindings])
        classes = set(re.findall(r"\b(?:class|struct) TALLYFOOT_EXPORT (\w+)", headers))
        functions = set(re.findall(r"^(?:\[\[noreturn\]\] )?TALLYFOOT_EXPORT [^;(]*?(\w+)\(", headers, re.MULTILINE))
        symbols = run("nm", "--dynamic", "--defined-only", "--demangle", self.libraries() / "libTallyfoot.so")
        names = [line.split(" ", 2)[2] for line in symbols.splitlines()]
        self.expect(any(name.startswith("tallyfoot::Tallyfoot::log(") for name in names), "no log among the exports")

        def public(name):
            name = re.sub(r"^(typeinfo|typeinfo name|vtable) for ", "", name)
            member = re.fullmatch(r"tallyfoot::(\w+)(?:::~?(\w+|operator[^(]+)(\[abi:\w+\])?)?(\(.*)?", name)
            if member is None:
                return False
            return member[1] in classes or (member[2] is None and member[1] in functions)

        strangers = [name for name in names if not public(name)]
        self.expect(not strangers, "exported, but not public:\n" + "\n".join(strangers))

    def InstallsWhatItsHeadersInclude(self):
        """The installed headers are those that the umbrella header reaches, no fewer and no more."""
        root = self.prefix / "include"
        reached, ahead = set(), ["Tallyfoot/Tallyfoot.h"]
        while ahead:
            header = ahead.pop()
            if header in reached:
                continue
            reached.add(header)
            ahead += re.findall(r'^#include "(Tallyfoot/[^"]+)"', (root / header).read_text(encoding="utf-8"), re.MULTILINE)
        installed = {path.relative_to(root).as_posix() for path in self.installed_headers()}
        self.expect(installed == reached, f"not installed: {sorted(reached - installed)}\n"
                                          f"installed for nothing: {sorted(installed - reached)}")

    def StaysInAProcessThatUnloadsIt(self):
        """Its threads run until the process ends: a plugin that goes must not take their code away."""
        library = self.libraries() / "libTallyfoot.so"
        program = ("import _ctypes, ctypes; "
                   f"_ctypes.dlclose(ctypes.CDLL({str(library)!r})._handle); "
                   "print('libTallyfoot' in open('/proc/self/maps').read())")
        self.expect(run(sys.executable, "-c", program) == "True\n", "unloaded")

    # --- What they share

    def libraries(self):
        return next(self.prefix.rglob("libTallyfoot.so")).parent

    def installed_headers(self):
        return sorted((self.prefix / "include/Tallyfoot").rglob("*.h"))

    def launcher(self):
        return ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []

    def copy_of_the_host(self):
        return Path(shutil.copytree(self.source / "Examples/Host", self.scratch / "Host"))

    def configure(self, project, prefix, *options, expect_success=True):
        return run(self.cmake, "-S", project, "-B", self.scratch / "build", "-G", "Ninja",
                   f"-DCMAKE_CXX_COMPILER={self.compiler}", f"-DCMAKE_PREFIX_PATH={prefix}", *options,
                   expect_success=expect_success)

    def build_with_cmake(self, prefix, *options):
        self.configure(self.copy_of_the_host(), prefix, *options)
        run(self.cmake, "--build", self.scratch / "build")
        return self.scratch / "build/Host"

    def build_with_pkg_config(self, *questions, archive=False):
        environment = {**os.environ, "PKG_CONFIG_PATH": str(self.libraries() / "pkgconfig")}
        flags = run("pkg-config", *questions, "Tallyfoot", environment=environment)
        if archive:
            flags = flags.replace("-lTallyfoot", "-l:libTallyfoot.a")
        host = self.scratch / "host"
        run(self.compiler, "-std=c++20", self.copy_of_the_host() / "main.cpp", "-o", host, *flags.split())
        return host

    def run_host(self, host, ends="token token-1, type screen, key pgName\n", records=RECORDS_OF_THE_HOST, **variables):
        """Runs it in a home of its own, without a server; its records must be on disk afterwards."""
        home = self.scratch / "home"
        home.mkdir()
        environment = {name: value for name, value in os.environ.items() if not name.startswith(("XDG_", "TALLYFOOT_"))}
        environment |= {"HOME": str(home)} | {name: str(value) for name, value in variables.items()}
        output = run(host, environment=environment)
        self.expect(output.endswith(ends), output)
        logs = sorted((home / ".local/share/Tallyfoot/Shop").rglob("*.log"))
        found = sum(path.read_bytes().count(b"jsonsplit") for path in logs)
        self.expect(found == records, f"{found} records in {logs}")

    @staticmethod
    def expect(truth, otherwise):
        if not truth:
            raise Failure(otherwise)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("test")
    for name in ("source", "build", "work", "cmake", "compiler"):
        parser.add_argument(f"--{name}", required=True)
    given = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="tallyfoot-package-") as scratch:
        try:
            getattr(PackageTests(given, Path(scratch)), given.test)()
        except Failure as failure:
            print(failure, file=sys.stderr)
            return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
