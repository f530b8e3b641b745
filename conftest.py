"""Loads the plugin for packet tests from this tree; where the package is installed, pytest finds it by itself."""

pytest_plugins = ["adp.testing.plugin"]
