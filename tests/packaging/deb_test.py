#!/usr/bin/env python3
"""The Debian package: built, installed, used from the shell, from C and from Python, and removed again.

    deb_test.py BUILD_DIRECTORY C_CLIENT

The system is not touched: all of it happens in a mount namespace, where a file system in memory lies
over the real one. Where that is not allowed the test is skipped (status 77)."""
import glob
import os
import subprocess
import sys
import tempfile

SKIPPED = 77

# Inside the namespace; $1 is the place of the file system in memory.
OVERLAY = """
set -e
mount -t tmpfs tmpfs "$1"
mkdir "$1/upper" "$1/work" "$1/root"
mount -t overlay overlay -o lowerdir=/,upperdir="$1/upper",workdir="$1/work" "$1/root"
mount --rbind /proc "$1/root/proc"
mount --rbind /dev "$1/root/dev"
mkdir -p "$1/root/tmp/package"
mount --bind "$2" "$1/root/tmp/package"
exec chroot "$1/root" sh /tmp/package/use.sh
"""

# A user's first hour. Every line must succeed.
USE = r"""
set -eux
cd /tmp/package
find /usr /etc /var/lib -xdev 2>/dev/null | grep -v '^/var/lib/dpkg' | sort > before
dpkg -i kestra.deb
dpkg -V kestra
test "$(kestra '1 + 1')" = 2
test "$(kestra --version)" = "kestra $VERSION"
man -w kestra
test -s /usr/share/bash-completion/completions/kestra
for page in $(zgrep -o '/usr/share/doc/.*' /usr/share/man/man1/kestra.1.gz); do test -s "$page"; done
cc client.c -o client $(pkg-config --cflags --libs kestra)
./client
mkdir debian
printf 'Source: client\n\nPackage: client\nArchitecture: any\n' > debian/control
dpkg-shlibdeps -O ./client | grep -F "kestra (>= $VERSION)"
cc -std=c99 /usr/share/doc/kestra/examples/c/synchronous.c -o synchronous $(pkg-config --cflags --libs kestra)
test "$(./synchronous "SELECT FileName FROM FILES.FILE('/etc/passwd')" | tail -n 1)" = passwd
/usr/bin/python3 -c '
import kestra
with kestra.Session() as session:
    row, = session.query("SELECT FileName, Size FROM FILES.FILE(%r)" % "/etc/passwd")
    assert (row.FileName, type(row.Size)) == ("passwd", int), row
'
dpkg -i kestra.deb
test "$(kestra '1 + 1')" = 2
/usr/bin/python3 -c 'import kestra'
dpkg -r kestra
! command -v kestra
! ldconfig -p | grep libkestra
find /usr /etc /var/lib -xdev 2>/dev/null | grep -v '^/var/lib/dpkg' | sort > after
diff before after
"""


def build_package(build, directory):
    subprocess.run(["cpack", "-G", "DEB", "-B", directory], cwd=build, check=True, timeout=280,
                   capture_output=True)
    package, = glob.glob(directory + "/*.deb")
    os.rename(package, directory + "/kestra.deb")


def can_overlay(place):
    result = subprocess.run(
        ["unshare", "-m", "sh", "-ec", 'mount -t tmpfs t "$1"; mkdir "$1/u" "$1/w" "$1/r"; mount -t '
         'overlay o -o lowerdir=/,upperdir="$1/u",workdir="$1/w" "$1/r"', "sh", place],
        capture_output=True)
    return result.returncode == 0


def version_of(package):
    return subprocess.run(["dpkg-deb", "-f", package, "Version"], check=True, capture_output=True,
                          text=True).stdout.strip()


def main(build, client):
    with tempfile.TemporaryDirectory() as root:
        place, shared = root + "/place", root + "/shared"
        os.mkdir(place)
        os.mkdir(shared)
        if not can_overlay(place):
            print("this system does not allow a mount namespace with an overlay")
            return SKIPPED
        build_package(build, shared)
        with open(client) as source, open(shared + "/client.c", "w") as copy:
            copy.write(source.read())
        with open(shared + "/use.sh", "w") as script:
            script.write(USE)
        # No variable of a Python that is not the system's.
        environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "HOME": "/root", "LC_ALL": "C.UTF-8",
                       "VERSION": version_of(shared + "/kestra.deb")}
        result = subprocess.run(["unshare", "-m", "sh", "-c", OVERLAY, "sh", place, shared],
                                env=environment, capture_output=True, text=True, timeout=200)
        if result.returncode != 0:
            print(result.stdout[-4000:], result.stderr[-8000:])
        return result.returncode


sys.exit(main(*sys.argv[1:]))
