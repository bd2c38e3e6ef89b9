#!/usr/bin/env python3
"""Builds the space-map walk's benchmark tree: about 460,000 entries shaped like a home folder.

  bench/make_walk_tree.py DEST          # the 460,000-entry tree (a few minutes)
  bench/make_walk_tree.py --chain DEST  # one chain of 20,000 folders with 255-byte names

The tree is the same on every run (a fixed seed): about 30,000 folders between 1 and 9 levels
deep, most holding a few dozen small files, some holding thousands, a few large files, hard
links within one folder and across folders, symbolic links, and empty folders. Blocks are
allocated with fallocate, so making it writes little data; it takes about 3.5 GB. DEST must not exist yet.
"""
import os
import random
import sys

TARGET_ENTRIES = 460_000


def allocate(path, size):
    fd = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_EXCL, 0o644)
    try:
        if size > 0:
            os.posix_fallocate(fd, 0, size)
    finally:
        os.close(fd)


def file_size(rng):
    roll = rng.random()
    if roll < 0.35:
        return 0
    if roll < 0.85:
        return rng.randint(1, 8_000)
    if roll < 0.9995:
        return rng.randint(8_000, 64_000)
    return rng.randint(1_000_000, 4_000_000)


def make_tree(dest):
    rng = random.Random(460)
    os.makedirs(dest)
    entries = 0
    folders = [dest]
    files = []
    queue = [(dest, 0)]
    while queue and entries < TARGET_ENTRIES:
        folder, depth = queue.pop(rng.randrange(len(queue)) if rng.random() < 0.3 else 0)
        subfolders = 0 if depth >= 9 else rng.choice([0, 1, 2, 3, 4, 6, 10])
        many = rng.random() < 0.01
        count = rng.randint(800, 4000) if many else rng.randint(0, 30)
        for i in range(count):
            if entries >= TARGET_ENTRIES:
                break
            path = os.path.join(folder, f"file-{i:04d}{rng.choice(['.txt', '.o', '.png', ''])}")
            allocate(path, file_size(rng))
            files.append(path)
            entries += 1
        for i in range(subfolders):
            path = os.path.join(folder, f"dir-{depth}-{i}")
            os.mkdir(path)
            folders.append(path)
            queue.append((path, depth + 1))
            entries += 1
    for i in range(2000):
        source = rng.choice(files)
        if rng.random() < 0.5:
            target = os.path.join(os.path.dirname(source), f"hard-{i}")
        else:
            target = os.path.join(rng.choice(folders), f"hard-{i}")
        os.link(source, target)
        entries += 1
    for i in range(2000):
        target = os.path.join(rng.choice(folders), f"soft-{i}")
        os.symlink(rng.choice(folders + files), target)
        entries += 1
    print(f"{dest}: {entries} entries, {len(folders)} folders")


def make_chain(dest, depth=20_000, name_length=255):
    os.makedirs(dest)
    fd = os.open(dest, os.O_RDONLY | os.O_DIRECTORY)
    name = "d" * name_length
    for level in range(depth):
        os.mkdir(name, dir_fd=fd)
        child = os.open(name, os.O_RDONLY | os.O_DIRECTORY, dir_fd=fd)
        os.close(fd)
        fd = child
        if level % 1000 == 999:
            allocate_at(fd, "data.bin", 2_000_000)
    os.close(fd)
    print(f"{dest}: a chain of {depth} folders named with {name_length} bytes")


def allocate_at(folder_fd, name, size):
    fd = os.open(name, os.O_WRONLY | os.O_CREAT | os.O_EXCL, 0o644, dir_fd=folder_fd)
    try:
        os.posix_fallocate(fd, 0, size)
    finally:
        os.close(fd)


def main(arguments):
    if len(arguments) == 2 and arguments[0] == "--chain":
        make_chain(arguments[1])
    elif len(arguments) == 1 and not arguments[0].startswith("-"):
        make_tree(arguments[0])
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main(sys.argv[1:])
