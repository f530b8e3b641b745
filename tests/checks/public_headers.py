"""Compiles each public header alone, included twice, as C99 and as C++17, without a warning of gcc or clang.

    public_headers.py ROOT
"""
import glob
import os
import subprocess
import sys

# What programs include beside the library's own headers.
OTHERS = ("platform/device_services.h", "platform/netlink_api.h", "vdevice/remote/vdev_linkscan.h",
          "vdevice/services/vdev_equeue.h")
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wundef", "-Wconversion", "-Werror"]
C = ["-xc", "-std=c99", "-Wstrict-prototypes"]
CXX = ["-xc++", "-std=c++17", "-Wold-style-cast"]
COMPILERS = (["gcc", *C], ["g++", *CXX], ["clang-14", *C], ["clang++-14", *CXX])


def headers_of(root):
    """The public headers as a program names them."""
    own = glob.glob(os.path.join(root, "include", "adp", "*.h"))
    return [*sorted(f"adp/{os.path.basename(path)}" for path in own), *OTHERS]


def complaint(root, compiler, header):
    """What a compiler says about a header; empty when it is content."""
    done = subprocess.run([*compiler, *WARNINGS, "-I", os.path.join(root, "include"), "-I", root, "-fsyntax-only", "-"],
                          input=f"#include <{header}>\n#include <{header}>\n", capture_output=True, text=True,
                          check=False)
    return done.stderr if done.returncode else ""


def main(root):
    headers = headers_of(root)
    complaints = [f"{' '.join(compiler)}: {header}:\n{text}" for compiler in COMPILERS for header in headers
                  if (text := complaint(root, compiler, header))]
    print("\n".join(complaints) or f"{len(headers)} headers, {len(COMPILERS)} compilers: no warnings")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
