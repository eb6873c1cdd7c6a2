#!/usr/bin/env python3
"""Proves the programs on a real kernel's USB stack: boots Debian's kernel in a virtual machine where the simulated
board is a USB gadget, and runs checks.sh there.

usage: run_vm.py BUILD [WORK]

BUILD holds vrkctl, usb_board and usb_rate; WORK keeps the kernel package between the runs (BUILD/usb). The last line
is "N passed, M failed". Exit code: 0 passed, 1 failed, 77 this machine cannot run it; the reason is then on stderr.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import threading

SOURCE = pathlib.Path(__file__).resolve().parent
PROGRAMS = ("vrkctl", "usb_board", "usb_rate")
# With what they are loaded with; the modules that they depend on come before them.
MODULES = {"dummy_hcd": "num=3", "libcomposite": "", "usb_f_hid": "", "usbhid": "", "hid-generic": ""}
TIME_LIMIT = 240  # seconds
QEMU = "qemu-system-x86_64"


class CannotRun(Exception):
    pass


def output_of(*command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, **options)
    if done.returncode != 0:
        raise CannotRun(f"{' '.join(map(str, command))}: {done.stderr.strip()}")
    return done.stdout


def kernel_package(work):
    """The newest kernel's package file, fetched if it is not there yet."""
    depends = re.search(r"^Depends: (linux-image-\S+)", output_of("apt-cache", "show", "linux-image-amd64"), re.M)
    if not depends:
        raise CannotRun("the list of packages has no linux-image-amd64")
    work.mkdir(parents=True, exist_ok=True)
    packages = sorted(work.glob(f"{depends[1]}_*.deb"))
    if not packages:
        output_of("apt-get", "download", depends[1], cwd=work)
        packages = sorted(work.glob(f"{depends[1]}_*.deb"))
    return packages[-1]


def unpack(package, work):
    """Gives the kernel, and the modules by name."""
    folder = work / package.stem
    if not folder.exists():
        partial = folder.with_suffix(".partial")
        shutil.rmtree(partial, ignore_errors=True)
        output_of("dpkg-deb", "-x", package, partial)
        partial.rename(folder)
    modules = {path.stem: path for path in folder.glob("lib/modules/*/kernel/**/*.ko")}
    return next(folder.glob("boot/vmlinuz-*")), modules


def in_loading_order(names, modules):
    order = []

    def add(name):
        path = modules.get(name) or modules[name.replace("_", "-")]
        depends = re.search(rb"\0depends=([^\0]*)\0", path.read_bytes())
        for needed in filter(None, depends[1].decode().split(",") if depends else []):
            add(needed)
        if path not in order:
            order.append(path)

    for name in names:
        add(name)
    return order


class Archive:
    """A file system for the kernel to start with ("newc" cpio)."""

    def __init__(self):
        self.data = bytearray()
        self.folders = set()
        self.count = 0

    def add(self, path, content=b"", mode=0o100755):
        path = path.strip("/")
        parent = os.path.dirname(path)
        if parent and parent not in self.folders:
            self.folders.add(parent)
            self.add(parent, mode=0o040755)
        self.count += 1
        name = path.encode() + b"\0"
        fields = (self.count, mode, 0, 0, 1, 0, len(content), 0, 0, 0, 0, len(name), 0)
        for part in (b"070701" + b"".join(b"%08X" % field for field in fields) + name, content):
            self.data += part
            self.data += bytes(-len(self.data) % 4)

    def finish(self):
        self.add("TRAILER!!!", mode=0)
        return bytes(self.data)


def libraries_of(program):
    """Paths under which the loader looks for them."""
    return re.findall(r"(?:=> |^\s+)(/\S+) \(0x", output_of("ldd", program), re.M)


def stripped(program, work):
    small = work / program.name
    output_of("strip", "-o", small, program)
    return small.read_bytes()


def file_system(build, modules, work):
    archive = Archive()
    busybox = shutil.which("busybox")
    if not busybox:
        raise CannotRun("busybox is not installed (busybox-static)")
    archive.add("bin/busybox", pathlib.Path(busybox).read_bytes())
    archive.add("init", (SOURCE / "init.sh").read_bytes())
    archive.add("checks.sh", (SOURCE / "checks.sh").read_bytes())
    archive.add("70-vrkbench.rules", (SOURCE.parents[1] / "packaging/70-vrkbench.rules").read_bytes())
    libraries = set()
    for name in PROGRAMS:
        found = [path for path in build.rglob(name) if path.is_file() and os.access(path, os.X_OK)]
        if not found:
            raise SystemExit(f"run_vm.py: {build} holds no {name}")
        archive.add(f"bin/{name}", stripped(found[0], work))
        libraries.update(libraries_of(found[0]))
    for library in sorted(libraries):
        archive.add(library, pathlib.Path(library).read_bytes())
    order = in_loading_order(MODULES, modules)
    for path in order:
        archive.add(f"modules/{path.name}", path.read_bytes())
    lines = [f"{path.name} {MODULES.get(path.stem, '')}\n" for path in order]
    archive.add("modules/order", "".join(lines).encode())
    return archive.finish()


def boot(kernel, initial):
    """Runs the machine; shows its console. Gives the match of its last line, if it came so far."""
    command = [QEMU, "-accel", "tcg", "-m", "1024", "-nographic", "-no-reboot", "-nic", "none", "-kernel", kernel,
               "-initrd", initial, "-append", "console=ttyS0 quiet panic=-1"]
    machine = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    limit = threading.Timer(TIME_LIMIT, machine.kill)
    limit.start()
    result = None
    try:
        for line in machine.stdout:
            # The firmware before the kernel clears the screen.
            text = re.sub(r"\x1b(\[[0-9;?=]*[A-Za-z]|c)", "", line.decode(errors="replace")).rstrip()
            if text:
                print(text, flush=True)
            result = re.fullmatch(r"(\d+) passed, (\d+) failed", text)
            if result:
                break
        if not result and limit.finished.is_set():
            print(f"The virtual machine was stopped after {TIME_LIMIT} s.", file=sys.stderr)
    finally:
        limit.cancel()
        machine.kill()
    return result


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    work = pathlib.Path(sys.argv[2]).resolve() if len(sys.argv) > 2 else build / "usb"
    try:
        for needed in (QEMU, "apt-get", "dpkg-deb"):
            if not shutil.which(needed):
                raise CannotRun(f"{needed} is not installed")
        kernel, modules = unpack(kernel_package(work), work)
        initial = work / "initial.cpio"
        initial.write_bytes(file_system(build, modules, work))
    except CannotRun as reason:
        print(f"The USB path cannot be run here: {reason}", file=sys.stderr)
        return 77
    result = boot(kernel, initial)
    if not result:
        print("The virtual machine did not come to the end of its checks.\n0 passed, 1 failed")
        return 1
    return 0 if result[2] == "0" else 1


if __name__ == "__main__":
    sys.exit(main())
