"""A management process with settings of its own, and the thread that drives it: it sets, reads back and compares.

The process is adpsh. Sometimes it is killed during a call and started again: acknowledged settings must still be there.
It goes on while the device is off: its calls fail as their contracts say, and work again when the device is back, with
its power-on settings.
"""

import os
import signal
import threading
from random import Random

from health import Holdings
from adp.lab import Build, LabError
from adp.lab.shell import Shell
from power import DOWN, RISING, UP, cycle, phase
from settings import OK, check, failure

# Between two calls, so that managers leave processor time for the frames.
PAUSE_SECONDS = 0.002
READ_SHARE = 0.5
KILL_SHARE = 0.002
# The longest delay of a kill, so that some come before and some after the device has received the call.
KILL_SECONDS = 0.002
END_SECONDS = 60.0
# The resources of a process that is never killed are compared at the end with those after this many calls.
WARM_CALLS = 1000
DEVICE_LOST = (LabError, ConnectionError, TimeoutError, ValueError)


class Manager(threading.Thread):
    """A manager of a device's settings. `problem` is the reason why it has stopped, if it has. Unless `is_killed` it
    keeps its process all the time.
    """

    def __init__(self, name, lab, power, settings, build, seed, is_killed):
        super().__init__(name=name, daemon=True)
        self._lab, self._power, self._settings = lab, power, settings
        self._build = Build(build)
        self._random = Random(seed)
        self._kill_share = KILL_SHARE if is_killed else 0.0
        self._holdings = None
        self._ending = threading.Event()
        self._shell = None
        self._cycle = 0
        self.problem = None
        self.calls = self.values = self.failed_calls = self.kills = 0

    def run(self):
        try:
            self._start()
            while not self._ending.wait(PAUSE_SECONDS):
                self._turn()
            self._read_all()
            self._check_holdings()
        except Exception as problem:  # the main thread reports it
            self.problem = f"{type(problem).__name__}: {problem}" if not isinstance(problem, LabError) else problem
        finally:
            if self._shell:
                self._shell.close()

    def end(self):
        """Ends the thread, which reads everything a last time."""
        self._ending.set()

    def await_end(self):
        self.join(END_SECONDS)
        if self.is_alive():
            raise LabError(f"{self.name} does not end.")

    def _start(self):
        self._shell = Shell(self._lab.device, self._build.command("adpsh", "--json", "--keep-going"))
        self._shell.call("map")

    def _note_holdings(self):
        if not self._kill_share and not self._holdings and self.calls >= WARM_CALLS:
            self._holdings = Holdings(f"process of {self.name}", self._shell.pid)

    def _check_holdings(self):
        """The process has as many descriptors as before, and its memory has not grown."""
        if self._holdings:
            self._holdings.check_descriptors()
            # An emulator keeps memory that its program gives back.
            if not self._build.is_emulated:
                self._holdings.check_memory()

    def _begin_cycle(self, number):
        """The device is on again, with its power-on settings."""
        self._cycle = number
        for each in self._settings:
            each.power_on()

    def _turn(self):
        setting = self._random.choice(self._settings)
        moment = self._power.moment
        if phase(moment) == UP:
            if cycle(moment) != self._cycle:
                self._begin_cycle(cycle(moment))
            else:
                self._note_holdings()
        may_write = setting.is_certain() and phase(moment) != RISING
        if not may_write or self._random.random() < READ_SHARE:
            self._read(setting)
        elif phase(moment) == UP and self._random.random() < self._kill_share:
            self._kill_during_write(setting)
        else:
            self._write(setting)

    def _is_steady(self, began):
        """Whether the device was on during the whole call, and in the cycle that the settings are of."""
        return began == self._power.moment and phase(began) == UP and cycle(began) == self._cycle

    def _is_off(self, began):
        return began == self._power.moment and phase(began) == DOWN

    def _ask(self, line):
        """The answer, and whether the device was on all the time, or off all the time."""
        with self._power.call() as began:
            answer = self._shell.call(line)
            self.calls += 1
            return answer, self._is_steady(began), self._is_off(began)

    def _check_lost(self, line, answer, wanted):
        self.failed_calls += 1
        if answer["result"] != wanted:
            raise LabError(f"'{line}' answers {answer['result']} without a device, and not {wanted}.")

    def _read(self, setting):
        if not setting.read_line:
            self._look(setting)
            return
        answer, steady, off = self._ask(setting.read_line)
        if steady:
            self._check_value(setting, setting.value_of(answer))
        elif off:
            self._check_lost(setting.read_line, answer, setting.lost_read)

    def _check_value(self, setting, value):
        check(setting, value)
        self.values += 1

    def _look(self, setting):
        with self._power.call() as began:
            try:
                value = setting.look()
            except DEVICE_LOST as problem:
                if self._is_steady(began):
                    raise LabError(f"The device shows no {setting.name}: {problem}.") from None
                return
            if self._is_steady(began):
                self._check_value(setting, value)

    def _write(self, setting):
        step = setting.step(self._random)
        with self._power.call() as outer:
            # The device may have begun to rise meanwhile: then nothing may be changed.
            if phase(outer) == RISING:
                return
            answer, steady, off = self._ask(step.line)
        if not steady:
            setting.lose()
        if off:
            self._check_lost(step.line, answer, setting.lost_write)
        if steady and answer["result"] != step.result:
            raise LabError(f"'{step.line}' answers {failure(answer)}, and not {step.result}; {setting.name} was "
                           f"{setting.value()!r}.")  # fmt: skip
        if steady:
            setting.settle(step.value)

    def _kill_during_write(self, setting):
        step = setting.step(self._random)
        with self._power.call() as began:
            if phase(began) != UP:
                return
            self._shell.begin(step.line)
            self._ending.wait(self._random.uniform(0, KILL_SECONDS))
            os.kill(self._shell.pid, signal.SIGKILL)
            self._shell.close()
        self.kills += 1
        setting.doubt(step.value)
        for each in self._settings:
            each.forget_process()
        self._start()
        self._read_all()

    def _read_all(self):
        for setting in self._settings:
            self._read(setting)
