# SPDX-License-Identifier: MIT
from collections.abc import Callable, Iterator
from os import PathLike

class Error(Exception): ...

class Service:
    @property
    def kind(self) -> str:
        """'teletext', 'captions' or 'dvb'."""
    @property
    def name(self) -> str: ...
    @property
    def language(self) -> str:
        """ISO 639-2; empty when nothing says it."""
    @property
    def pid(self) -> int: ...
    @property
    def program(self) -> int: ...
    @property
    def hard_of_hearing(self) -> bool: ...

class Run:
    text: str
    foreground: int  # 0xRRGGBB
    background: int  # 0xAARRGGBB
    italic: bool
    underline: bool

class Line:
    runs: list[Run]
    left: float  # percent of the picture
    top: float

class Picture:
    rgba: bytes  # rows from top to bottom, 4 bytes a pixel
    width: int
    height: int
    x: int
    y: int
    display_width: int
    display_height: int

class Cue:
    service: Service
    start: float  # seconds
    stop: float
    text: str
    @property
    def lines(self) -> list[Line]: ...
    @property
    def picture(self) -> Picture | None: ...

class Input(Iterator[Cue]):
    """A recording: iterate over it for the cues of every service, in the order in which they end."""
    def __next__(self) -> Cue: ...
    @property
    def services(self) -> list[Service]:
        """Those found so far."""
    def service(self, which: str) -> Iterator[Cue]:
        """The cues of the services with this name ('CC1', 'page 888') or language ('deu')."""

class Writer:
    """Writes the cues of one service as .vtt, .srt or .ttml; the file is there when the block ends."""
    def __init__(self, path: str | PathLike[str], service: Service) -> None: ...
    def add(self, cue: Cue) -> None:
        """Adds a cue; those of a service in their order."""
    def finish(self) -> None: ...
    def __enter__(self) -> Writer: ...
    def __exit__(self, *exception: object) -> None: ...

def open(
    path: str | PathLike[str],
    *,
    page: str | None = None,
    language: str | None = None,
    pid: int = 0,
    keep_times: bool = False,
    warn: Callable[[str], None] | None = None,
) -> Input:
    """Opens a recording, told by its content. Raises Error."""

def version() -> str: ...
