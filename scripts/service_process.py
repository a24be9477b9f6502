"""talvenor-service as a child process, for the scripts that need one on loopback."""
import secrets
import subprocess
import sys
import threading


def create_account(bin_folder, data, email, name, tier, password=None):
    """Makes an account in the data folder; answers with its password, a random one unless given."""
    password = password or secrets.token_urlsafe(12)
    data.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run([bin_folder / "talvenor-service", "account", "create", "--data", data, "--email", email,
                    "--name", name, "--tier", tier, "--password-stdin"],
                   input=password + "\n", text=True, check=True, stdout=subprocess.DEVNULL)
    return password


class Service:
    """Runs the service on a free port for the length of a with block; `url` is its base address."""

    MARK = "Listening on "

    def __init__(self, bin_folder, data):
        self._command = [bin_folder / "talvenor-service", "serve", "--data", data, "--listen", "127.0.0.1:0"]
        self._process = None
        self.url = None

    def __enter__(self):
        self._process = subprocess.Popen(self._command, stdout=subprocess.PIPE, text=True)
        for line in self._process.stdout:
            if line.startswith(self.MARK):
                self.url = line[len(self.MARK):].strip()
                # A pipe that nobody reads would one day stop the service.
                threading.Thread(target=self._pass_on, daemon=True).start()
                return self
        raise SystemExit(f"talvenor-service did not start (exit code {self._process.wait()})")

    def _pass_on(self):
        for line in self._process.stdout:
            sys.stderr.write(line)

    def __exit__(self, *_):
        self._process.terminate()
        try:
            self._process.wait(10)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
