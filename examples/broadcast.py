#!/usr/bin/env python3
"""Broadcasts a WAV file to zone 1 of a zone controller: the library from Python, by ctypes alone."""
import argparse
import ctypes
import os
import sys
import threading
import wave

ZONE_CONTROLLER = 1  # device type
TASK, VOLUME, PRIORITY = 1001, 100, 70
BLOCK_MS, BLOCK_BYTES, FRAME_BYTES = 20, 1764, 4096


class Pacing(ctypes.Structure):  # K740_PACING
    _fields_ = [("seconds", ctypes.c_int64), ("microseconds", ctypes.c_int64), ("unused", ctypes.c_ubyte * 20),
                ("correction", ctypes.c_int32)]


changed = threading.Condition()
state = 1  # of the task: accepted


# Runs on threads of the library, which ctypes makes known to the interpreter. A callback object must live as long as
# the library may call it: this one belongs to the module.
@ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_int, ctypes.c_int)
def on_task_status(task, status):
    global state
    print(f"task {task}: state {status}", flush=True)
    with changed:
        state = status
        changed.notify()
    return 0


def await_state_beyond(former):  # an accepted task gets another within some 4 s, a stopped one within 150 ms
    with changed:
        changed.wait_for(lambda: state != former)
        return state


def check(result, what):
    if result != 0:
        raise RuntimeError(f"{what}: {result}")


def stream(k740, pcm):
    pacing = Pacing()
    for at in range(0, len(pcm), BLOCK_BYTES):
        block = pcm[at:at + BLOCK_BYTES]
        k740.K740_SleepStart(ctypes.byref(pacing))
        check(k740.K740_SendAudioStreamProc(TASK, block, len(block)), "audio refused")
        k740.K740_SleepEnd(BLOCK_MS, ctypes.byref(pacing))  # without the interpreter's lock, as every call


def broadcast(k740, options, pcm):
    check(k740.K740_Initialize(), "not initialised")
    check(k740.K740_SetNIC(options.host.encode()), "bad address of this machine")
    k740.K740_SetDeviceCallback(None, None, None, on_task_status, None, None, None)
    check(k740.K740_AddDevice(options.id, ZONE_CONTROLLER, options.controller.encode()), "zone controller refused")
    check(k740.K740_StartAudioStreamTask(TASK, VOLUME, PRIORITY, 0, f"{options.id:04X}01".encode(), 0), "task refused")
    if await_state_beyond(1) != 2:
        raise RuntimeError(f"the broadcast failed: {state}")
    stream(k740, pcm)
    k740.K740_StopTask(TASK)
    await_state_beyond(2)


def read_wav(path):
    with wave.open(path, "rb") as file:
        if file.getparams()[:3] != (1, 2, 44100):
            raise ValueError(f"{path} is not 44.1 kHz, 16 bit, mono")
        pcm = file.readframes(file.getnframes())
    return pcm + bytes(-len(pcm) % FRAME_BYTES)  # silence up to a whole frame: the library sends no part of one


def main():
    arguments = argparse.ArgumentParser(description=__doc__)
    arguments.add_argument("file", help="WAV: 44.1 kHz, 16 bit, mono")
    arguments.add_argument("host", nargs="?", default="192.168.1.166", help="address of this machine")
    arguments.add_argument("controller", nargs="?", default="192.168.1.33", help="address of the zone controller")
    arguments.add_argument("id", nargs="?", default=33, type=int, help="and its ID")
    arguments.add_argument("--library", default="libk740.so.1", help="a path, or a name that the loader finds")
    options = arguments.parse_args()
    pcm = read_wav(options.file)
    k740 = ctypes.CDLL(options.library)
    try:
        broadcast(k740, options, pcm)
        return 0
    except RuntimeError as error:
        print(error, file=sys.stderr, flush=True)
        return 1
    finally:
        k740.K740_Deinitialize()


# Threads of the library that were busy may call back once more. They must not meet an interpreter that is being taken
# down, so the process ends at once.
os._exit(main())
