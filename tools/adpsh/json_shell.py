"""adpsh as a JSON pipe, in a network namespace of its own so that no line can reach the machine's interfaces."""
import json
import os
import select
import shlex
import subprocess

ANSWER_SECONDS = 60
NAMESPACE = ["unshare", "-n"] if os.geteuid() == 0 else ["unshare", "-Urn"]


def command():
    """The shell of the build under test, with its emulator if there is one."""
    return shlex.split(os.environ["ADPSH"])


def can_isolate():
    return subprocess.run(NAMESPACE + ["true"], stderr=subprocess.DEVNULL).returncode == 0


class Shell:
    """One running shell; each line gets its record."""

    def __init__(self, environment, *options, prologue=""):
        run = shlex.join(command() + ["--json", "--keep-going", *options])
        self.process = subprocess.Popen(NAMESPACE + ["sh", "-c", f"{prologue} exec {run}"], env=environment,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.lines = 0

    def __call__(self, line):
        self.lines += 1
        self.process.stdin.write(line.encode("latin-1") + b"\n")
        self.process.stdin.flush()
        assert select.select([self.process.stdout], [], [], ANSWER_SECONDS)[0], f"no answer to {line!r}"
        text = self.process.stdout.readline()
        assert text, f"the shell ended at {line!r}: {self.process.stderr.read().decode()}"
        answer = json.loads(text)
        assert answer.pop("line") == self.lines
        return answer

    def result(self, line):
        answer = self(line)
        assert "error" not in answer, answer
        return answer["result"]

    def outputs(self, line):
        answer = self(line)
        assert "error" not in answer, answer
        return answer["outputs"]

    def error(self, line):
        answer = self(line)
        assert set(answer) == {"error"}, answer
        return answer["error"]

    def close(self):
        self.process.stdin.close()
        status = self.process.wait(ANSWER_SECONDS)
        self.process.stdout.close()
        self.process.stderr.close()
        return status
