"""Which requests of browsers are served.

A page of another site can make a browser send requests here: by the address, or by a name that it lets point to this
machine. So the name in the request must be this machine's, and what the browser says about the request's origin must
not speak against it. The token in the path keeps out whoever cannot read the terminal.
"""

import hmac
import re

_HOSTS = re.compile(r"(127\.0\.0\.1|localhost|\[::1\])(:[0-9]{1,5})?", re.IGNORECASE | re.ASCII)

HEADERS = {
    "Content-Security-Policy": "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; "
    "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'",
    "X-Content-Type-Options": "nosniff",
    "X-Frame-Options": "DENY",
    "Referrer-Policy": "no-referrer",
    "Cross-Origin-Opener-Policy": "same-origin",
    "Cross-Origin-Resource-Policy": "same-origin",
    "Cache-Control": "no-store",
    "Server": "adp-panel",
}


def _only(headers, name):
    """The value of a header; of several none is right."""
    values = headers.getall(name, [])
    return values[0] if len(values) == 1 else None


def is_own_host(headers):
    return _HOSTS.fullmatch(_only(headers, "Host") or "") is not None


def has_own_origin(headers):
    """The browser says that this server's page makes the request."""
    return _only(headers, "Origin") == f"http://{_only(headers, 'Host')}"


def is_from_elsewhere(headers, is_page):
    """The browser says that another site makes the request. A link to the page may stand anywhere."""
    if "Origin" in headers and not has_own_origin(headers):
        return True
    site = headers.get("Sec-Fetch-Site", "none")
    is_visit = headers.get("Sec-Fetch-Mode") == "navigate" and headers.get("Sec-Fetch-Dest") == "document"
    return site not in ("same-origin", "none") and not (is_page and is_visit)


def is_token(given, token):
    """Takes as long for a token that is nearly right."""
    return hmac.compare_digest(given.encode(errors="surrogateescape"), token.encode())
