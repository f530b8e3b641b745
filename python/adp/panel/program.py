"""Programs that the panel starts. They end with whoever wants what they write, and with the panel."""

import asyncio
import contextlib

from ..lab.process import tied

LONGEST_LINE = 1 << 16


@contextlib.asynccontextmanager
async def program(command, longest_line=LONGEST_LINE):
    """A process with pipes for what it writes, killed at the end if it still runs."""
    pipe, null = asyncio.subprocess.PIPE, asyncio.subprocess.DEVNULL
    process = await asyncio.create_subprocess_exec(
        *tied(command), stdin=null, stdout=pipe, stderr=pipe, limit=longest_line
    )
    try:
        yield process
    finally:
        if process.returncode is None:
            process.kill()
        await process.wait()
