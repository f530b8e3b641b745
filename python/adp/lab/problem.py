"""The error of the bench."""


class LabError(Exception):
    """The bench cannot be set up or does not answer. The text is a sentence for the user."""
