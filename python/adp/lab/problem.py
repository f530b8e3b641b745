"""What went wrong on the bench, as a sentence for the person in front of it."""


class LabError(Exception):
    """The bench cannot be set up or does not answer. The text is a sentence that a person understands."""
