"""The example qt_window, driven by its commands on an X server of its own."""

import subprocess

from examplewindow import check


class Window:
    """The running program. Each command waits for its answer."""

    def __init__(self, program, folder, *models):
        self.folder = folder
        command = ["xvfb-run", "-a", "timeout", "120", program, *models, "--commands"]
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def do(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()
        answer = self.process.stdout.readline().strip()
        check(answer == "done", f"the command '{command}' is carried out", answer)

    def saved(self, name):
        path = self.folder / f"{name}.ppm"
        self.do(f"save {path}")
        return path

    def end(self):
        self.process.stdin.close()
        check(self.process.wait() == 0, "the exit code is 0", self.process.returncode)
