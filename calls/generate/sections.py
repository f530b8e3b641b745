"""The sections of the driver calls: a section is what stands under one heading of the driver's header.

The first library is the driver. The others are services of the device: they are one section together, which gets its
arguments as they are and answers with any number.
"""
import re
from dataclasses import dataclass

import interface
import model

SERVICES = "Services"


@dataclass
class Section:
    title: str
    functions: list  # in the header's order

    @property
    def name(self):
        """What the section's source file, its factory and its member are called."""
        return "_".join(self.words())

    @property
    def class_name(self):
        return "".join(word.capitalize() for word in self.words()) + "Calls"

    @property
    def is_service(self):
        return self.title == SERVICES

    def words(self):
        return re.findall(r"[a-z0-9]+", self.title.lower())


def read(calls):
    """The sections in the header's order, the services last; every call that a device answers is in one of them."""
    driver = next(iter(calls.libraries))
    found = {}
    for function in calls.headers.functions:
        if function.name in model.LOCAL_CALLS:
            continue
        if model.RESULT_KINDS[function.returns] != "kI32":
            raise interface.HeaderError(f"{function.name}: a device answers with a status")
        title = function.heading if calls.library_of[function.name] == driver else SERVICES
        if not title:
            raise interface.HeaderError(f"{function.name} stands under no heading")
        found.setdefault(title, []).append(function)
    check_headings(calls.headers)
    return [Section(title, functions) for title, functions in found.items()]


def check_headings(headers):
    for heading in headers.headings:
        if headers.headings.count(heading) > 1:
            raise interface.HeaderError(f"two headings '{heading}'")
        if not any(function.heading == heading for function in headers.functions):
            raise interface.HeaderError(f"heading '{heading}' has no calls")
