"""A ClickHouse server on the loopback that lives in a folder and goes when it is left."""

import os
import re
import resource
import socket
import subprocess
import time

SERVER = "/usr/sbin/clickhouse-server"
CLIENT = "/usr/bin/clickhouse-client"

# No user has a password, and nobody but this machine reaches it.
CONFIG = """<yandex>
  <logger><level>warning</level><log>{folder}/log</log><errorlog>{folder}/errors</errorlog></logger>
  <listen_host>127.0.0.1</listen_host>
  <tcp_port>{port}</tcp_port>
  <path>{folder}/data/</path>
  <tmp_path>{folder}/tmp/</tmp_path>
  <user_files_path>{folder}/files/</user_files_path>
  <format_schema_path>{folder}/schemas/</format_schema_path>
  <users_config>{folder}/users.xml</users_config>
  <default_profile>default</default_profile>
  <default_database>default</default_database>
  <mark_cache_size>67108864</mark_cache_size>
  <timezone>UTC</timezone>
</yandex>
"""
USERS = """<yandex>
  <profiles><default>
    <allow_experimental_low_cardinality_type>1</allow_experimental_low_cardinality_type>
  </default></profiles>
  <quotas><default/></quotas>
  <users><default>
    <password></password><networks><ip>127.0.0.1</ip></networks>
    <profile>default</profile><quota>default</quota>
  </default></users>
</yandex>
"""
LONGEST_START = 120  # seconds


class Trouble(Exception):
    """What the user is told."""


def free_port():
    with socket.socket() as sock:
        sock.bind(("127.0.0.1", 0))
        return sock.getsockname()[1]


class Server:
    def __init__(self, folder):
        self.folder = folder
        self.port = free_port()
        self.process = None

    def __enter__(self):
        for name in ("data", "tmp", "files", "schemas"):
            os.makedirs(os.path.join(self.folder, name))
        config = self.write("config.xml", CONFIG)
        self.write("users.xml", USERS)
        with open(os.path.join(self.folder, "output"), "wb") as output:
            self.process = subprocess.Popen([SERVER, "--config-file=" + config],
                                            cwd=self.folder, stdout=output, stderr=output)
        try:
            self.wait()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *ignored):
        self.process.terminate()
        try:
            self.process.wait(60)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()

    def write(self, name, template):
        path = os.path.join(self.folder, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(template.format(folder=self.folder, port=self.port))
        return path

    def wait(self):
        end = time.monotonic() + LONGEST_START
        while time.monotonic() < end:
            if self.process.poll() is not None:
                break
            try:
                socket.create_connection(("127.0.0.1", self.port), 1).close()
                return
            except OSError:
                time.sleep(0.1)
        with open(os.path.join(self.folder, "output"), encoding="utf-8",
                  errors="replace") as output:
            raise Trouble("ClickHouse does not start:\n" + output.read()[-2000:])

    def command(self, *arguments):
        return [CLIENT, "--host", "127.0.0.1", "--port", str(self.port), *arguments]

    def run(self, query, settings=()):
        """The result as text."""
        result = subprocess.run(self.command(*settings, "--query", query), cwd=self.folder,
                                capture_output=True, check=False)
        if result.returncode != 0:
            raise Trouble("ClickHouse refuses:\n%s\n%s" % (query, result.stderr.decode()))
        return result.stdout.decode()

    def rows(self, query):
        return [line.split("\t") for line in self.run(query).splitlines()]

    def load(self, table, path):
        """Returns the seconds of processor time that client and server took together."""
        before = self.seconds() + seconds_of_children()
        with open(path, "rb") as file:
            result = subprocess.run(
                self.command("--input_format_skip_unknown_fields=1", "--query",
                             "INSERT INTO %s FORMAT JSONEachRow" % table),
                stdin=file, cwd=self.folder, capture_output=True, check=False)
        if result.returncode != 0:
            raise Trouble("ClickHouse refuses %s:\n%s" % (path, result.stderr.decode()))
        return self.seconds() + seconds_of_children() - before

    def seconds(self):
        """Of processor time that the server has taken so far."""
        with open("/proc/%d/stat" % self.process.pid, encoding="utf-8") as stat:
            fields = re.sub(r".*\)", "", stat.read()).split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def seconds_of_children():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime
