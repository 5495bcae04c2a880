"""A daemon on the simulated device, as a process."""

import os
import select
import signal
import subprocess

PATIENCE = 20


class Daemon:
    """Writes its log to the file, behind what is there. To be closed."""

    def __init__(self, build, device, log, environment):
        command = [os.path.join(build, "bin/subsysd"), "--device", device]
        for name in ("libsimvs.so", "libsimims.so"):
            command += ["--load", os.path.join(build, "lib", name)]
        with open(log, "ab") as file:
            self.process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=file, env=environment)

    def await_start(self):
        """Whether it serves; None when it does neither that nor end."""
        if not select.select([self.process.stdout], [], [], PATIENCE)[0]:
            return None
        return self.process.stdout.readline() != b""

    def stop(self):
        """The exit code; None when it does not end."""
        self.process.send_signal(signal.SIGTERM)
        try:
            return self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            return None

    def close(self):
        """Kills it when it still runs."""
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        self.process.stdout.close()
