"""All names of the bindings. adp/__init__.py has them without importing them before one is used."""

from .board import map_ports as map_ports
from .board import scan_links as scan_links
from .calls.agg import *  # noqa: F403
from .calls.constants import *  # noqa: F403
from .calls.dot1x import *  # noqa: F403
from .calls.fp import *  # noqa: F403
from .calls.gpio import *  # noqa: F403
from .calls.l2 import *  # noqa: F403
from .calls.mac import *  # noqa: F403
from .calls.mcast import *  # noqa: F403
from .calls.mirror import *  # noqa: F403
from .calls.pkt import *  # noqa: F403
from .calls.port import *  # noqa: F403
from .calls.priority import *  # noqa: F403
from .calls.qos import *  # noqa: F403
from .calls.records import *  # noqa: F403
from .calls.startup import *  # noqa: F403
from .calls.stg import *  # noqa: F403
from .calls.storm import *  # noqa: F403
from .calls.tables import *  # noqa: F403
from .calls.vlan import *  # noqa: F403
from .calls.vlan_tag import *  # noqa: F403
from .errors import Error as Error
from .errors import LibraryError as LibraryError
from .frames import RxFrame as RxFrame
from .frames import TxFrame as TxFrame
from .ports import PortSet as PortSet
from .ports import agg as agg
