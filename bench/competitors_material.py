# SPDX-License-Identifier: MIT
"""What the players are measured with: messages made from the sample's records, and the same pictures and
speech as Matroska files for the other players."""

import os
import subprocess
import sys
from array import array

HERE = os.path.dirname(os.path.abspath(__file__))
SAMPLES = os.path.join(HERE, "..", "tests", "data", "samples")

HEADER_BYTES = 13
BLOCK_BYTES = 330  # ten speech frames, 200 ms
BLOCKS_PER_MINUTE = 300
SAMPLE_RATE = 8000
LOUD = 1000  # of 32768: what counts as sound


def records(path):
    """The speech blocks and the video payloads of a message."""
    with open(path, "rb") as file:
        data = file.read()
    blocks, payloads = [], []
    at = HEADER_BYTES
    while at < len(data):
        if data[at] == 0:
            blocks.append(data[at + 1:at + 1 + BLOCK_BYTES])
            at += 1 + BLOCK_BYTES
        else:
            length = int.from_bytes(data[at + 1:at + 3], "little")
            payloads.append(data[at + 3:at + 3 + length])
            at += 3 + length
    return blocks, payloads


def write_message(path, blocks, payloads, minutes):
    """A message of that many minutes that repeats the blocks; with payloads five pictures a second."""
    count = int(BLOCKS_PER_MINUTE * minutes)
    with open(path, "wb") as file:
        file.write(b"TRV01.01" + bytes([5 if payloads else 0]) + (10 * count).to_bytes(4, "little"))
        for i in range(count):
            if payloads:
                payload = payloads[i % len(payloads)]
                file.write(b"\1" + len(payload).to_bytes(2, "little") + payload)
            file.write(b"\0" + blocks[i % len(blocks)])


def run(*command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    if done.returncode != 0:
        sys.exit(f"{' '.join(command)}\n{done.stdout.decode(errors='replace')}")


def samples(path):
    with open(path, "rb") as file:
        return array("h", file.read())


class Material:
    """Makes its files in a folder as they are asked for."""

    def __init__(self, folder, trvdump):
        self.folder = folder
        self.trvdump = trvdump
        os.makedirs(folder, exist_ok=True)
        self.blocks, self.payloads = records(os.path.join(SAMPLES, "greeting-video.trv"))
        self._start_loud()

    def path(self, name):
        return os.path.join(self.folder, name)

    def _blocks_pcm(self):
        """What the blocks decode to, one after the other."""
        write_message(self.path("once.trv"), self.blocks, [], len(self.blocks) / BLOCKS_PER_MINUTE)
        return self.pcm("once.trv")

    def _start_loud(self):
        """Turns the blocks round so that a message begins with sound."""
        pcm = self._blocks_pcm()
        step = SAMPLE_RATE // 5
        first = max(range(len(self.blocks)), key=lambda i: max(map(abs, pcm[i * step:i * step + step // 10])))
        self.blocks = self.blocks[first:] + self.blocks[:first]

    def alternate(self, seconds):
        """Has the messages made from now on be quiet and loud in turn, for that many seconds each."""
        pcm = self._blocks_pcm()
        step = SAMPLE_RATE // 5
        quiet = min(range(len(self.blocks)), key=lambda i: max(map(abs, pcm[i * step:(i + 1) * step])))
        count = round(5 * seconds)
        self.blocks = [self.blocks[quiet]] * count + [self.blocks[0]] * count

    def pcm(self, message):
        raw = self.path(message) + ".raw"
        run(self.trvdump, "--force", "--pcm", raw, self.path(message))
        return samples(raw)

    def message(self, minutes, video):
        name = f"{'video' if video else 'voice'}-{minutes}.trv"
        if not os.path.exists(self.path(name)):
            write_message(self.path(name), self.blocks, self.payloads if video else [], minutes)
        return self.path(name)

    def matroska(self, minutes, video):
        """The same for the other players: Motion JPEG at five pictures a second, GSM in its WAV49 form."""
        message = self.message(minutes, video)
        target = message.replace(".trv", ".mkv")
        if os.path.exists(target):
            return target
        self.pcm(os.path.basename(message))
        command = ["ffmpeg", "-nostdin", "-y", "-f", "s16le", "-ar", str(SAMPLE_RATE), "-ac", "1",
                   "-i", message + ".raw"]
        if video:
            pictures = message.replace(".trv", "-png")
            run(self.trvdump, "--png", pictures, message)
            command += ["-framerate", "5", "-i", os.path.join(pictures, "picture-%04d.png"),
                        "-c:v", "mjpeg", "-q:v", "5", "-pix_fmt", "yuvj420p"]
        run(*command, "-c:a", "libgsm_ms", "-b:a", "13000", target)
        return target

    def first_loud_second(self, message):
        pcm = self.pcm(os.path.basename(message))
        return next(i for i, sample in enumerate(pcm) if abs(sample) >= LOUD) / SAMPLE_RATE
