"""What goes wrong between the page and a device, as a sentence for a person."""


class PanelError(Exception):
    """Its text is shown in the page."""


class DeviceGone(PanelError):
    """No device runs there now."""


class MalformedMessage(Exception):
    """The page's end of a connection breaks the protocol, so the connection is closed."""
