"""What went wrong with a measurement, as a sentence for the person in front of it."""


class BenchError(Exception):
    """Something cannot be measured. The text is a sentence that a person understands."""
