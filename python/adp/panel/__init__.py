"""The front panel: a page that shows running devices, and its server."""
