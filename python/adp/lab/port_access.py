"""IEEE 802.1X by wire: hostapd lets a host in, and wpa_supplicant asks to be let in."""

from .builds import ROOT
from .process import poll_until
from .program import Program

HOSTAPD = """\
interface={interface}
driver=wired
ieee8021x=1
eapol_version=2
use_pae_group_addr=1
eap_server=1
eap_user_file={users}
eap_reauth_period=0
ctrl_interface={control}
logger_stdout=-1
logger_stdout_level=1
"""
SUPPLICANT = """\
ctrl_interface={control}
ap_scan=0
eapol_version=2
network={{
    key_mgmt=IEEE8021X
    eap=MD5
    identity="{name}"
    password="{password}"
    eapol_flags=0
}}
"""


LOG_ON_SECONDS, TRY_SECONDS = 30.0, 3.0
ACTION = ROOT / "switchd" / "daemon" / "adp-switchd-dot1x"


class Hostapd(Program):
    """hostapd with an EAP server of its own on an interface; it opens and closes the port of an adp-switchd, if there is
    one. `users` are names and passwords.
    """

    def __init__(self, namespace, interface, users, switchd=None):
        super().__init__(namespace, f"hostapd on {interface}")
        self._interface = interface
        try:
            accounts = "".join(f'"{name}" MD5 "{password}"\n' for name, password in users.items())
            files = {"users": self.write("users", accounts), "control": self.path("control")}
            self.start("hostapd", self.write("hostapd.conf", HOSTAPD.format(interface=interface, **files)))
            self.await_start(lambda: self.answers(*self._control("ping")))
            if switchd:
                self._environment["ADP_SWITCHD_DIR"] = switchd.folder
                self._environment["PATH"] += f":{switchd.programs}"
                self.start(*self._control("-a", ACTION))
        except BaseException:
            self.close()
            raise

    def stations(self):
        """What hostapd knows of each station, as text."""
        return self.run(*self._control("all_sta"))

    def is_authorised(self, address):
        """Whether the station with this MAC address has been let in."""
        done = self.try_to_run(*self._control("sta", address))
        return "[AUTHORIZED]" in done.stdout

    def _control(self, *words):
        return ("hostapd_cli", "-p", self.path("control"), "-i", self._interface, *words)


class Supplicant(Program):
    """wpa_supplicant on a host's interface."""

    def __init__(self, namespace, interface, name, password):
        super().__init__(namespace, f"wpa_supplicant on {interface}")
        self._interface = interface
        try:
            text = SUPPLICANT.format(control=self.path("control"), name=name, password=password)
            self.start("wpa_supplicant", "-D", "wired", "-i", interface, "-c", self.write("wpa.conf", text))
            self.await_start(lambda: self.answers(*self._control("ping")))
        except BaseException:
            self.close()
            raise

    def status(self):
        """{key: value}"""
        lines = self.run(*self._control("status")).splitlines()
        return dict(line.split("=", 1) for line in lines if "=" in line)

    def is_let_in(self):
        """Whether the supplicant has seen success."""
        return self.status().get("suppPortStatus") == "Authorized"

    def log_off(self):
        """Leaves the port, which is closed then."""
        self.run(*self._control("logoff"))

    def log_on(self):
        """Tries again and again to be let in after log_off(): hostapd ignores who comes back at once."""
        self.run(*self._control("logon"))
        poll_until(self._try_again, LOG_ON_SECONDS, f"{self.name}: the success", TRY_SECONDS)

    def _try_again(self):
        return self.is_let_in() or not self.run(*self._control("reassociate"))

    def _control(self, *words):
        return ("wpa_cli", "-p", self.path("control"), "-i", self._interface, *words)
