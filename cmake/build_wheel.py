"""Builds the wheel of the Python package from a copy, so that nothing is left among the sources: build_wheel.py SOURCE FOLDER"""
import os
import shutil
import sys

from setuptools import build_meta


def main(source, folder):
    copy = os.path.join(folder, "python")
    for old in (copy, os.path.join(folder, "build")):  # what is no longer among the sources, too
        shutil.rmtree(old, ignore_errors=True)
    shutil.copytree(source, copy, ignore=shutil.ignore_patterns("__pycache__", "*.egg-info"))
    os.chdir(copy)
    build_meta.build_wheel(folder, {"--global-option": "--quiet"})


if __name__ == "__main__":
    main(*map(os.path.abspath, sys.argv[1:]))
