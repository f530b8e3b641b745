"""The generated part of the package."""
