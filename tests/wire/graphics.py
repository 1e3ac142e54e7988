#!/usr/bin/python3
"""graphics.py TAVEL_SIM LIBKELO REPO: the signal graphs over the wire.

First without models, on channels that a fixture seeds with hand-made little-endian blocks: each
"/1/api/graphics/..." route answers its graph as JSON (the two trace forms and the case of
neither, the signed and unsigned conversions, the scalings, the power distribution's whole-block
test, the Lissajous header, the fixed audio record), a missing key is a 500 with "map::at", an
unknown session a 440; each of the nine "/1/ws/graphics/..." endpoints sends the same graph as a
binary message first, decoded with the project's own schema. Then with the graphics model alone,
which measures every channel about ten times a second: the spectrum's WebSocket is pushed at
that rate, and a session whose only use is a spectrum graph expires, while one that watches the
power distribution (whose pushes count as activity) stays alive. Exit status 0 when every check
passed.
"""
import json
import os
import struct
import sys
import time

import websocket  # Debian's python3-websocket
from google.protobuf import json_format  # Debian's python3-protobuf

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
import wire  # noqa: E402 - found through the path set above

VIEWER = "wire-graphics-viewer"
IDLE = "wire-graphics-idle"
ACTIVE = "wire-graphics-active"
USERS = [{"name": "viewer", "password": "viewer-wire", "role": "read-only"}]


def u16(*words):
    return list(struct.pack("<%dH" % len(words), *words))


def s16(*words):
    return list(struct.pack("<%dh" % len(words), *words))


def u32(*words):
    return list(struct.pack("<%dI" % len(words), *words))


def s32(*words):
    return list(struct.pack("<%di" % len(words), *words))


def channel(value, **keys):
    resource = {"value": {"bytes": value}}
    resource.update(keys)
    return resource


def graphics(name):
    return "/system/graphics/" + name


def seeded_channels():
    """The hand-made blocks: each graph's edge cases at once."""
    scale = {"centerFrequency": {"double": 98.1}, "centerFrequencyUnits": {"string": "MHz"},
             "frequencySpan": {"double": 0.4}, "minValue": {"double": -100.0},
             "minValueUnits": {"string": "dBc"}, "maxValue": {"double": 0.0},
             "maxValueUnits": {"string": "dBc"}}
    # Trace: amplitude 8 bytes, frequency 17: the narrow form, the last byte never read.
    # Mask: 16 and 16 bytes: the wide form, 65535 is -1, a frequency of 2^32-1 is -1.
    record = u16(65535, 1, 2) + u16(3, 4, 5) + u16(65535, 65535, 65286, 100, 0) + [0] * 10
    record += [0] * (70 - len(record))
    return {
        graphics("exSpectrumAmplitude"): channel(s16(-80, -3, 0, 32767), **scale),
        graphics("exSpectrumFrequency"): channel(u32(97900000, 98000000, 98100000, 98200000)
                                                 + [0xAB]),
        graphics("exSpectrumMaskAmplitude"): channel(u32(65535, 0x12345, 0, 0)),
        graphics("exSpectrumMaskFrequency"): channel(u32(4294967295, 1, 2, 3)),
        graphics("exConstellationData"): channel(s32(16777216, -8388608)),
        graphics("exConstellationGroupData"): channel([9, 9] + u16(7) + s32(22500, -1500)
                                                      + s16(-250, 3)),
        graphics("exLissajousData"): channel(s32(8388608, -16777216),
                                             header={"bytes": [0] * 12 + u16(65535)}),
        graphics("exWaterfallData"): channel(u16(12345) + s16(-5) + u16(0) + s16(0)),
        graphics("exAmAmAmplitude"): channel(u32(134217728, 0, 67108864)),
        graphics("exAmPmAmplitude"): channel(u32(2147483648, 4294967295)),
        graphics("exLmsFilterFreqDomain"): channel(s16(-250, 100, 5)),
        graphics("exLmsFreqVector"): channel(s32(-1000, 1000)),
        graphics("exAudioModVector"): channel(record, header={"bytes": [0] * 12 + [1, 0, 3, 1]}),
    }


SCALE_JSON = ('"centerFrequency":98.1,"minValue":-100,"maxValue":0,"frequencySpan":0.4,'
              '"centerFrequencyUnits":"MHz","minValueUnits":"dBc","maxValueUnits":"dBc"')
EXPECTED_JSON = {
    "spectrum": '{"maskPoints":[{"y":-1,"x":-1},{"y":9029,"x":1},{"y":0,"x":2},{"y":0,"x":3}],'
                '"spectrumPoints":[{"y":-80,"x":97900000},{"y":-3,"x":98000000},'
                '{"y":0,"x":98100000},{"y":32767,"x":98200000}],' + SCALE_JSON + '}',
    "constellation": '{"points":[{"y":-0.5,"x":1}]}',
    "signalConstellation/subCarriers":
        '{"groups":[{"groupIndex":3,"groupValue":-2.5,"firstValue":22.5,"secondValue":-1.5}]}',
    "lissajous": '{"points":[{"y":-1,"x":0.5}],"headerValue":65535}',
    "powerdistribution": '{"points":[{"y":-5,"x":123.45},{"y":0,"x":0}]}',
    "amamcorrection": '{"points":[{"y":1,"x":0},{"y":0,"x":1},{"y":0.5,"x":2}]}',
    "ampmcorrection": '{"points":[{"y":180,"x":0},{"y":359.99999991618097,"x":1}]}',
    "eqFrequencyResponse": '{"frequencies":[-1000,1000],"responses":[-2.5,1,0.05]}',
}

WS_MESSAGES = {
    "spectrum": "Spectrum", "constellation": "Constellation",
    "signalConstellation/subCarriers": "SubCarrierGroupList", "lissajous": "Lissajous",
    "powerdistribution": "PowerDistribution", "amamcorrection": "AmAmCorrection",
    "ampmcorrection": "AmPmCorrection", "eqFrequencyResponse": "EqFrequencyResponse",
    "audio-mod-vectors": "AudioModVectors",
}


def run_fixture(sim, checks, schema):
    fixture = sim.fixture("graphics", {"users": USERS, "resources": seeded_channels()})
    broken = sim.fixture("graphics-broken", {"resources": {
        graphics("exLmsFreqVector"): {"other": {"int": 1}}}})
    sim.start(fixtures=[fixture], sessions={VIEWER: "viewer"}, demo_models=False)

    for route, expected in EXPECTED_JSON.items():
        status, headers, body = sim.get("/1/api/graphics/" + route, VIEWER)
        checks.check("GET %s is 200 JSON" % route,
                     status == 200 and headers.get("Content-Type", "").startswith(
                         "application/json"), "%s %s" % (status, headers))
        checks.check("GET %s answers the decoded blocks" % route, body.decode() == expected,
                     body.decode())

    status, _, body = sim.get("/1/api/graphics/audio-mod-vectors", VIEWER)
    vectors = json.loads(body)
    checks.check("audio vectors: 65535 is 655.35, a modulation vector's second word -0.01",
                 status == 200 and vectors["audioVector1"] == {"value1": 655.35, "value2": 0.01,
                                                               "value3": 0.02}
                 and vectors["modulationVector1"]["value1"] == 655.35
                 and vectors["modulationVector1"]["value2"] == -0.01
                 and vectors["modulationVector1"]["value3"] == -2.5, body.decode())
    checks.check("audio vectors: header bytes 1, 0, 3, 1 name the sources and input types",
                 vectors.get("audioSourceMode1") == "AUDIO_SOURCE_ANALOG_AES"
                 and "audioInputType1" not in vectors
                 and vectors.get("audioSourceMode2") == "AUDIO_SOURCE_DIGITAL_AES"
                 and vectors.get("audioInputType2") == "AUDIO_INPUT_TYPE_DIGITAL", body.decode())

    status, _, _ = sim.get("/1/api/graphics/spectrum", "wire-graphics-unknown")
    checks.check("an unknown session is 440", status == 440, status)

    for route, message in WS_MESSAGES.items():
        ws = wire.connect(sim, "/1/ws/graphics/" + route, VIEWER)
        opcode, data = ws.recv_data()
        ws.close()
        decoded = getattr(schema, message).FromString(data)
        ok = opcode == websocket.ABNF.OPCODE_BINARY
        if route in EXPECTED_JSON:
            status, _, body = sim.get("/1/api/graphics/" + route, VIEWER)
            rest = getattr(schema, message)()
            json_format.Parse(body, rest)
            ok = ok and decoded == rest
        checks.check("/1/ws/graphics/%s sends the graph as a binary %s first" % (route, message),
                     ok, str(decoded)[:300])
    spectrum = schema.Spectrum.FromString(
        receive_first(sim, "/1/ws/graphics/spectrum", VIEWER))
    checks.check("the spectrum frame: the narrow trace and the wide mask",
                 [(p.x.value, p.y.value) for p in spectrum.spectrumPoints][:2]
                 == [(97900000, -80), (98000000, -3)]
                 and [(p.x.value, p.y.value) for p in spectrum.maskPoints][0] == (-1, -1)
                 and spectrum.centerFrequencyUnits.value == "MHz", str(spectrum)[:300])
    sim.stop()

    # Blocks that make no points, and keys that are missing.
    sim.start(fixtures=[fixture, sim.fixture("graphics-edges", {"resources": {
        graphics("exWaterfallData"): channel([1, 2, 3, 4, 5, 6]),
        graphics("exSpectrumFrequency"): channel([0] * 24),
        graphics("exLissajousData"): channel(s32(0, 0), header={"bytes": [0] * 13}),
        graphics("exAmAmAmplitude"): channel([]),
    }}), broken], sessions={VIEWER: "viewer"}, demo_models=False)
    status, _, body = sim.get("/1/api/graphics/powerdistribution", VIEWER)
    checks.check("a power distribution block of 6 bytes is an empty success",
                 status == 200 and body == b"{}", "%s %s" % (status, body))
    status, _, body = sim.get("/1/api/graphics/spectrum", VIEWER)
    answer = json.loads(body) if status == 200 else {}
    checks.check("a trace of 8 and 24 bytes has no points, the mask and scale stand",
                 status == 200 and "spectrumPoints" not in answer and len(answer["maskPoints"]) == 4
                 and answer["centerFrequency"] == 98.1, body.decode())
    status, _, body = sim.get("/1/api/graphics/lissajous", VIEWER)
    checks.check("a Lissajous header of 13 bytes leaves headerValue out, points stay",
                 status == 200 and body == b'{"points":[{"y":0,"x":0}]}', body.decode())
    status, _, body = sim.get("/1/api/graphics/amamcorrection", VIEWER)
    checks.check("an AM-AM block of 0 bytes is an empty success",
                 status == 200 and body == b"{}", "%s %s" % (status, body))
    status, _, body = sim.get("/1/api/graphics/eqFrequencyResponse", VIEWER)
    checks.check("a channel without \"value\" is a 500 with map::at",
                 status == 500 and b"map::at" in body, "%s %s" % (status, body))
    sim.stop()


def receive_first(sim, target, session):
    ws = wire.connect(sim, target, session)
    try:
        return ws.recv_data()[1]
    finally:
        ws.close()


def frames_for(ws, seconds, heartbeat):
    """The binary frames that arrive within `seconds`, with their arrival times."""
    return [(arrival, data)
            for arrival, opcode, data in wire.receive_beating(ws, seconds, heartbeat, poll=0.3,
                                                              until_closed=True)
            if opcode == websocket.ABNF.OPCODE_BINARY]


def run_model(sim, checks, schema):
    fixture = sim.fixture("graphics-model", {"users": USERS, "models": ["graphics"]})
    sim.start(fixtures=[fixture], sessions={VIEWER: "viewer", IDLE: "viewer", ACTIVE: "viewer"},
              demo_models=False, extra=["--session-timeout", "3"])
    heartbeat = wire.Heartbeat(sim, VIEWER)
    spectrum_ws = wire.connect(sim, "/1/ws/graphics/spectrum", VIEWER)
    frames = frames_for(spectrum_ws, 2.0, heartbeat)
    spectra = [schema.Spectrum.FromString(data) for _, data in frames]
    checks.check("the spectrum is pushed about ten times a second",
                 14 <= len(frames) <= 26, len(frames))
    checks.check("each pushed spectrum holds the model's 1024 points and its mask",
                 spectra and all(len(s.spectrumPoints) == 1024 and len(s.maskPoints) == 10
                                 for s in spectra), [len(s.spectrumPoints) for s in spectra])
    checks.check("the trace moves from push to push",
                 len(spectra) > 2 and spectra[1].spectrumPoints != spectra[2].spectrumPoints)
    spectrum_ws.close()

    # IDLE only watches a spectrum, ACTIVE only the power distribution; neither reads anything
    # else for longer than the session timeout.
    idle_ws = wire.connect(sim, "/1/ws/graphics/spectrum", IDLE)
    active_ws = wire.connect(sim, "/1/ws/graphics/powerdistribution", ACTIVE)
    deadline = time.time() + 6.0
    while time.time() < deadline:
        frames_for(idle_ws, 0.2, heartbeat)
        frames_for(active_ws, 0.2, heartbeat)
    late_idle = frames_for(idle_ws, 1.0, heartbeat)
    late_active = frames_for(active_ws, 1.0, heartbeat)
    checks.check("pushes of the power distribution count as activity: still pushed",
                 len(late_active) >= 5, len(late_active))
    checks.check("pushes of the spectrum do not: its session expired and pushes stopped",
                 len(late_idle) == 0, len(late_idle))
    status, _, _ = sim.get("/1/api/graphics/constellation", ACTIVE)
    checks.check("the power distribution's session is alive", status == 200, status)
    status, _, _ = sim.get("/1/api/graphics/constellation", IDLE)
    checks.check("the spectrum's session has expired", status == 440, status)
    idle_ws.close()
    active_ws.close()


def run(sim, checks):
    schema = wire.schema("Graphics", sim.repo)
    run_fixture(sim, checks, schema)
    run_model(sim, checks, schema)


if __name__ == "__main__":
    sys.exit(wire.main(run))
