"""The error of a measurement."""


class BenchError(Exception):
    """Something cannot be measured. The text is a sentence for the user."""
