"""The HTTP server of the panel: the page's files, its WebSocket, captures."""

import asyncio
import pathlib
import re
import secrets

import aiohttp
from aiohttp import web

from . import guards
from .capture import capture
from .page_session import PageSession
from .problem import MalformedMessage, PanelError

ADDRESS = "127.0.0.1"
TOKEN_OCTETS = 24
MAX_MESSAGE = 1 << 18
HEARTBEAT_SECONDS = 20.0
END_SECONDS = 1.0
PAGE = pathlib.Path(__file__).parent / "page"
TYPES = {"html": "text/html", "js": "text/javascript", "css": "text/css", "svg": "image/svg+xml"}
# Neither dots that lead elsewhere nor files that browsers do not need.
_FILE = re.compile(rf"(?:[a-z0-9_-]+/)*[a-z0-9_-]+\.({'|'.join(TYPES)})", re.ASCII)


def _file(path):
    """A file of the page."""
    found = _FILE.fullmatch(path)
    if not found or not (PAGE / path).is_file():
        raise web.HTTPNotFound
    return web.Response(body=(PAGE / path).read_bytes(), content_type=TYPES[found[1]], charset="utf-8")


class Server:
    """Serves a panel until it is ended."""

    def __init__(self, panel, port=0):
        self._panel = panel
        self._port = port
        self._token = secrets.token_urlsafe(TOKEN_OCTETS)
        self._pages = {}  # {WebSocket: what ends it at once}

    async def start(self):
        """Gives the address that a person opens."""
        app = web.Application()
        app.router.add_route("*", "/{path:.*}", self._serve)
        app.on_response_prepare.append(self._add_headers)
        app.on_shutdown.append(self._close_pages)
        self._runner = web.AppRunner(app, access_log=None)
        await self._runner.setup()
        await web.TCPSite(self._runner, ADDRESS, self._port, shutdown_timeout=END_SECONDS).start()
        port = self._runner.addresses[0][1]
        return f"http://{ADDRESS}:{port}/{self._token}/"

    async def stop(self):
        await self._runner.cleanup()

    async def _add_headers(self, _request, response):
        response.headers.update(guards.HEADERS)

    async def _close_pages(self, _app):
        await asyncio.gather(*map(self._close_page, list(self._pages)))

    async def _close_page(self, socket):
        """A page that takes nothing does not keep the panel from ending."""
        abort = self._pages[socket]
        try:
            async with asyncio.timeout(END_SECONDS):
                await socket.close(code=aiohttp.WSCloseCode.GOING_AWAY, message=b"The panel ends.")
        except TimeoutError:
            abort()

    async def _serve(self, request):
        token, slash, path = request.match_info["path"].partition("/")
        if not guards.is_own_host(request.headers) or guards.is_from_elsewhere(request.headers, path == ""):
            raise web.HTTPForbidden
        if not slash or not guards.is_token(token, self._token) or request.method != "GET":
            raise web.HTTPNotFound
        if path == "socket":
            return await self._serve_page(request)
        if path.startswith("capture/"):
            return await self._capture(request, path.removeprefix("capture/"))
        return _file(path or "index.html")

    async def _capture(self, request, name):
        try:
            return await capture(request, self._panel.device(name))
        except PanelError as problem:
            raise web.HTTPBadRequest(text=str(problem)) from None

    async def _serve_page(self, request):
        if not guards.has_own_origin(request.headers):
            raise web.HTTPForbidden
        socket = web.WebSocketResponse(max_msg_size=MAX_MESSAGE, heartbeat=HEARTBEAT_SECONDS, compress=False)
        if not socket.can_prepare(request):
            raise web.HTTPNotFound
        await socket.prepare(request)
        self._pages[socket] = abort = request.transport.abort
        session = PageSession(self._panel, socket, abort)
        try:
            await self._panel.add_page(session)
            await session.run()
        except MalformedMessage as problem:
            await socket.close(code=aiohttp.WSCloseCode.POLICY_VIOLATION, message=str(problem).encode())
        except PanelError as problem:
            await socket.close(code=aiohttp.WSCloseCode.TRY_AGAIN_LATER, message=str(problem).encode())
        finally:
            del self._pages[socket]
            self._panel.remove_page(session)
        return socket
