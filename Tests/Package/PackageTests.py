"""Builds and runs a host outside the tree, as its developers would.

    PackageTests.py <test> --source <tree> --build <its build> --work <folder> --cmake <cmake> --compiler <c++>
                           --targets <all that is installed, with commas>
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
HEADERS_FOR_BINDINGS = ["Capture/Capture.h", "Facade/CaptureConnection.h", "Facade/CrashConnection.h", "Platform/FatalError.h"]


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
        self.cmake, self.compiler, self.targets = given.cmake, given.compiler, given.targets.split(",")
        self.prefix = self.work / "prefix"
        self.scratch = scratch

    # --- The tests

    def Install(self):
        """Installed in one place and moved to another: nothing in the package knows where it was."""
        shutil.rmtree(self.work, ignore_errors=True)
        # All that is installed, of a tree of which perhaps one room was built.
        run(self.cmake, "--build", self.build, "--target", *self.targets)
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
        host = self.build_objective_c_with_cmake("Examples/ObjCHost")
        self.expect("libTallyfootObjC.so" in run("readelf", "--dynamic", host), "the host does not use the library")
        self.run_objective_c_host(host)

    def ObjectiveCStatic(self):
        host = self.build_objective_c_with_cmake("Examples/ObjCHost", "-DHOST_STATIC=ON")
        self.expect("libTallyfoot" not in run("readelf", "--dynamic", host), "the host still wants a shared library")
        self.run_objective_c_host(host)

    def ObjectiveCPkgConfigShared(self):
        host = self.build_objective_c_with_pkg_config("--cflags", "--libs")
        self.run_objective_c_host(host, LD_LIBRARY_PATH=self.libraries())

    def ObjectiveCPkgConfigStatic(self):
        host = self.build_objective_c_with_pkg_config("--cflags", "--static", "--libs", archive=True)
        self.expect("libTallyfoot" not in run("readelf", "--dynamic", host), "the host still wants a shared library")
        self.run_objective_c_host(host)

    def CapturesAnAppOnAnotherStandInForUIKit(self):
        """Two taps and a screen; the third tap is on a button that is not to be logged."""
        app = self.build_objective_c_with_cmake("Tests/Package/App")
        output = self.run_host(app, ends="bought with Buy\n" * 3, records=3)
        labels = [line for line in output.splitlines() if line.startswith('"evtLabel: ')]
        self.expect(labels == ['"evtLabel: Buy"', '"evtLabel: Buy now"', '"evtLabel: Basket"'], output)
        self.expect(output.count('"deviceScrnDim: 390-844"') == 3, output)

    def NamesAComponentThatIsMissing(self):
        output = self.configure_without_success("Examples/ObjCHost", self.prefix_without_objective_c())
        self.expect("this package was built without Tallyfoot::ObjC" in output, output)

    def NamesAComponentThatIsUnknown(self):
        project = self.copy_of("Examples/Host")
        text = (project / "CMakeLists.txt").read_text(encoding="utf-8")
        (project / "CMakeLists.txt").write_text(text.replace("REQUIRED)", "REQUIRED COMPONENTS Swift)"), encoding="utf-8")
        output = " ".join(self.configure(project, self.prefix, expect_success=False).split())
        self.expect("Tallyfoot has no component Swift; it has Shared, Static and ObjC" in output, output)

    def PlaysTheDemo(self):
        """The tool alone: the shop is built in the tree only, and a plain host plays its part."""
        output = self.run_alone(self.prefix / "bin/tallyfoot", "demo", "--quick")
        self.expect("so a plain host plays its part" in output and "the same\n" in output, output)

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
        self.expect_what_is_reached_from("Tallyfoot/Tallyfoot.h")

    def InstallsWhatItsObjectiveCHeadersImport(self):
        self.expect_what_is_reached_from("TallyfootObjC/TallyfootObjC.h", "TallyfootObjC/TallyfootUIKit.h")

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

    def installed_headers(self, library="Tallyfoot"):
        return sorted((self.prefix / "include" / library).rglob("*.h"))

    def expect_what_is_reached_from(self, *umbrellas):
        """The installed headers are those that the umbrella headers reach, no fewer and no more."""
        root = self.prefix / "include"
        library = umbrellas[0].split("/")[0]
        reached, ahead = set(), list(umbrellas)
        while ahead:
            header = ahead.pop()
            if header in reached:
                continue
            reached.add(header)
            ahead += re.findall(rf'^#(?:include|import) ["<]({library}/[^">]+)[">]',
                                (root / header).read_text(encoding="utf-8"), re.MULTILINE)
        installed = {path.relative_to(root).as_posix() for path in self.installed_headers(library)}
        self.expect(installed == reached, f"not installed: {sorted(reached - installed)}\n"
                                          f"installed for nothing: {sorted(installed - reached)}")

    def launcher(self):
        return ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []

    def copy_of(self, project):
        return Path(shutil.copytree(self.source / project, self.scratch / Path(project).name))

    def copy_of_the_host(self):
        return self.copy_of("Examples/Host")

    def prefix_without_objective_c(self):
        prefix = Path(shutil.copytree(self.prefix, self.scratch / "prefix", symlinks=True))
        for file in prefix.rglob("TallyfootObjC*.cmake"):
            file.unlink()
        return prefix

    def configure_without_success(self, project, prefix):
        return " ".join(self.configure(self.copy_of(project), prefix, expect_success=False).split())

    def configure(self, project, prefix, *options, expect_success=True):
        return run(self.cmake, "-S", project, "-B", self.scratch / "build", "-G", "Ninja",
                   f"-DCMAKE_CXX_COMPILER={self.compiler}", f"-DCMAKE_PREFIX_PATH={prefix}", *options,
                   expect_success=expect_success)

    def build_with_cmake(self, prefix, *options):
        self.configure(self.copy_of_the_host(), prefix, *options)
        run(self.cmake, "--build", self.scratch / "build")
        return self.scratch / "build/Host"

    def build_with_pkg_config(self, *questions, archive=False):
        return self.build_with_flags("Tallyfoot", questions, archive, self.compiler, "-std=c++20",
                                     self.copy_of_the_host() / "main.cpp")

    def build_with_flags(self, package, questions, archive, *command):
        environment = {**os.environ, "PKG_CONFIG_PATH": str(self.libraries() / "pkgconfig")}
        flags = run("pkg-config", *questions, package, environment=environment)
        if archive:
            flags = re.sub(r"-l(Tallyfoot\w*)", r"-l:lib\1.a", flags)
        host = self.scratch / "host"
        run(*command, "-o", host, *flags.split())
        return host

    def build_objective_c_with_cmake(self, project, *options):
        copy = self.copy_of(project)
        self.configure(copy, self.prefix, *options)
        run(self.cmake, "--build", self.scratch / "build")
        return self.scratch / "build" / copy.name

    def build_objective_c_with_pkg_config(self, *questions, archive=False):
        return self.build_with_flags("TallyfootObjC", questions, archive, "clang",
                                     self.copy_of("Examples/ObjCHost") / "main.m")

    def run_objective_c_host(self, host, **variables):
        self.run_host(host, ends="token token-1, path no such path\n", records=RECORDS_OF_THE_OBJECTIVE_C_HOST,
                      **variables)

    def run_host(self, host, ends="token token-1, type screen, key pgName\n", records=RECORDS_OF_THE_HOST, **variables):
        """Runs it without a server; its records must be on disk afterwards. Returns its output."""
        output = self.run_alone(host, **variables)
        self.expect(output.endswith(ends), output)
        logs = sorted((self.scratch / "home/.local/share/Tallyfoot/Shop").rglob("*.log"))
        found = sum(path.read_bytes().count(b"jsonsplit") for path in logs)
        self.expect(found == records, f"{found} records in {logs}")
        return output

    def run_alone(self, *command, **variables):
        """In a home of its own."""
        home = self.scratch / "home"
        home.mkdir()
        environment = {name: value for name, value in os.environ.items() if not name.startswith(("XDG_", "TALLYFOOT_"))}
        environment |= {"HOME": str(home)} | {name: str(value) for name, value in variables.items()}
        return run(*command, environment=environment)

    @staticmethod
    def expect(truth, otherwise):
        if not truth:
            raise Failure(otherwise)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("test")
    for name in ("source", "build", "work", "cmake", "compiler", "targets"):
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
