#!/usr/bin/python3
"""Wire test of file uploads, USB volumes, certificates and the playlists' unknown operation.

The storage root is a folder of the run: the plug-in writes there ("storage-root"), and the
simulator's file catalogue scans it (fixture section "files"). A stick is a folder under
"mnt/", which counts as mounted for the catalogue; the plug-in does not remount it
("usb-remount": false), since this container cannot mount.
"""
import hashlib
import json
import os
import socket
import ssl
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
import wire  # noqa: E402

SESSION = "files-admin"
BOUNDARY = "kelo-wire-boundary"


def multipart(parts):
    """parts: (field, file name or None, bytes)."""
    body = b""
    for field, name, content in parts:
        body += b"--" + BOUNDARY.encode() + b"\r\n"
        disposition = 'Content-Disposition: form-data; name="%s"' % field
        if name is not None:
            disposition += '; filename="%s"' % name
        body += disposition.encode() + b"\r\n\r\n" + content + b"\r\n"
    return body + b"--" + BOUNDARY.encode() + b"--\r\n"


def upload(sim, file_type, volume, parts, tls=False):
    return sim.request("POST", "/1/api/files/%s?targetMountedVolume=%s" % (file_type, volume),
                       SESSION, multipart(parts), tls=tls,
                       headers={"Content-Type": "multipart/form-data; boundary=" + BOUNDARY})


def files_under(folder):
    found = []
    for directory, _, names in os.walk(folder):
        for name in names:
            found.append(os.path.relpath(os.path.join(directory, name), folder))
    return sorted(found)


def served_certificate(sim):
    pem = ssl.get_server_certificate(("127.0.0.1", sim.https_port))
    return ssl.PEM_cert_to_DER_cert(pem)


def openssl_pair(sim, name, common_name):
    key, crt = sim.path(name + ".key"), sim.path(name + ".crt")
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                    "ec_paramgen_curve:prime256v1", "-nodes", "-days", "2",
                    "-subj", "/CN=" + common_name, "-keyout", key, "-out", crt],
                   check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    with open(key, "rb") as k, open(crt, "rb") as c:
        return c.read(), k.read()


def cut_upload(sim, file_name):
    """Headers and part of a 2 MB body, then the connection is closed."""
    body = multipart([("file", file_name, b"x" * (2 * 1024 * 1024))])
    head = ("POST /1/api/files/upgradeFile?targetMountedVolume=ONBOARD_FILESYSTEM HTTP/1.1\r\n"
            "Host: 127.0.0.1\r\nCookie: SessionID=%s\r\n"
            "Content-Type: multipart/form-data; boundary=%s\r\nContent-Length: %d\r\n\r\n"
            % (SESSION, BOUNDARY, len(body)))
    with socket.create_connection(("127.0.0.1", sim.http_port), timeout=5) as connection:
        connection.sendall(head.encode() + body[: len(body) // 2])
        time.sleep(0.3)


def run(sim, checks):
    storage = sim.path("storage")
    onboard = os.path.join(storage, "data/halvor/files")
    stick = os.path.join(storage, "mnt/USB")
    os.makedirs(stick)
    sim.config_extra = {"storage-root": storage, "usb-remount": False}
    original_write = sim.write_config

    def write_config():
        # Bodies up to 8 MB, those above 64 kB in a temporary file.
        original_write()
        with open(sim.path("web-config.json")) as text:
            web = json.load(text)
        web["app"].update({"client_max_body_size": "8M", "client_max_memory_body_size": "64K",
                           "client_max_disk_body_size": "8M"})
        with open(sim.path("web-config.json"), "w") as out:
            json.dump(web, out)

    sim.write_config = write_config
    sim.start(fixtures=[sim.repo_file("config/fixtures/demo.json"),
                        sim.fixture("files", {"files": {"storageRoot": storage}})],
              sessions={SESSION: "admin"}, demo_models=True)

    status, _, body = sim.get("/1/api/files/mountedVolumes?fileType=AUDIO", SESSION)
    checks.check("audio goes to the mounted stick only", status == 200 and
                 json.loads(body) == {"volumes": ["USB"]}, body)
    status, _, body = sim.get("/1/api/files/mountedVolumes?fileType=UPGRADE_FILE", SESSION)
    checks.check("upgrade files go on board or to the stick", status == 200 and
                 json.loads(body) == {"volumes": ["ONBOARD_FILESYSTEM", "USB"]}, body)
    status, _, body = sim.get("/1/api/files/mountedVolumes?fileType=audio", SESSION)
    checks.check("the query value is looked up as given", status == 500 and
                 b"Unknown file type: audio" in body, body)
    status, _, body = sim.get("/1/api/files/mountedVolumes", SESSION)
    checks.check("the fileType query is required", status == 500 and
                 b"Request missing query parameter: fileType." in body, body)

    status, _, body = upload(sim, "audio", "USB", [("file", "jingle.mp3", b"ID3 audio bytes")])
    checks.check("an audio file to the stick", status == 200 and body == b"", body)
    checks.check("is on the stick", open(os.path.join(stick, "jingle.mp3"), "rb").read() ==
                 b"ID3 audio bytes")
    status, _, body = sim.get("/1/api/files/audio", SESSION)
    listed = json.loads(body).get("files", []) if status == 200 else []
    checks.check("and in the host's catalogue after the scan",
                 [f.get("fileName") for f in listed] == ["jingle.mp3"] and
                 listed[0].get("fileTypeId") == "AUDIO" and
                 listed[0].get("targetMountedVolume") == "USB" and
                 listed[0].get("fileSize") == 15, body)

    status, _, body = upload(sim, "audio", "ONBOARD_FILESYSTEM", [("file", "a.mp3", b"x")])
    checks.check("no audio on board", status == 500 and
                 b"Cannot upload audio files to onboard storage!" in body, body)
    status, _, body = upload(sim, "audio", "USB_B", [("file", "a.mp3", b"x")])
    checks.check("a stick that is not there", status == 500 and
                 b"The storage volume USB_B is not currently mounted." in body, body)
    status, _, body = upload(sim, "video", "USB", [("file", "a.mp4", b"x")])
    checks.check("an unknown type word", status == 500 and b"Unknown file type: video" in body)
    status, _, body = upload(sim, "upgradeFile", "ONBOARD_FILESYSTEM", [("title", None, b"x")])
    checks.check("no file part", status == 500 and
                 b"No files uploaded or files are empty." in body, body)
    status, _, body = upload(sim, "upgradeFile", "ONBOARD_FILESYSTEM",
                             [("file", "empty.pkg", b"")])
    checks.check("an empty file part", status == 500 and
                 b"Uploaded file is empty or invalid." in body, body)
    before = files_under(storage)
    for name in ("../../escape.pkg", "../mnt/USB/x.pkg", "a/b.pkg"):
        status, _, body = upload(sim, "upgradeFile", "ONBOARD_FILESYSTEM",
                                 [("file", "fine.pkg", b"fine"), ("file", name, b"evil")])
        checks.check("the name %r is refused" % name, status == 500 and
                     b"Invalid file name: " + name.encode() in body, body)
    checks.check("and nothing of those uploads was written", files_under(storage) == before and
                 not os.path.exists(sim.path("escape.pkg")), files_under(storage))

    big = os.urandom(3 * 1024 * 1024 + 7)
    status, _, body = upload(sim, "upgradeFile", "ONBOARD_FILESYSTEM",
                             [("file", "update.pkg", big)])
    with open(os.path.join(onboard, "update.pkg"), "rb") as written:
        same = hashlib.sha256(written.read()).digest() == hashlib.sha256(big).digest()
    checks.check("a 3 MB upload streamed by part arrives whole", status == 200 and same, body)
    spool = os.path.join(onboard, ".uploads")
    checks.check("its file part was written beside its target and moved, nothing left behind",
                 os.path.isdir(spool) and os.listdir(spool) == [], files_under(storage))

    cut_upload(sim, "cut.pkg")
    time.sleep(0.5)
    checks.check("a cut upload leaves no file behind",
                 not any("cut.pkg" in name or "kelo-part-" in name
                         for name in files_under(storage)) and os.listdir(spool) == [],
                 files_under(storage))
    status, _, _ = sim.get("/1/api/files/upgradeFile", SESSION)
    checks.check("and the server goes on", status == 200)

    status, _, body = sim.get("/1/api/files/upgradeFile", SESSION)
    guid = [f["fileGuid"] for f in json.loads(body)["files"] if f["fileName"] == "update.pkg"]
    status, _, _ = sim.request("DELETE", "/1/api/files/%s" % guid[0], SESSION)
    checks.check("delete asks the host, which removes the file", status == 200 and
                 not os.path.exists(os.path.join(onboard, "update.pkg")))

    status, _, body = sim.request("PUT", "/1/api/playlists/foo/1234", SESSION, b"")
    checks.check("an unknown playlist operation is refused by the host, not the plug-in",
                 status == 500 and b"Request missing" not in body, body)

    # Playlists: form data, the player's answers, entries with their files.
    def form(method, target, fields):
        return sim.request(method, target, SESSION,
                           multipart([(name, None, value.encode()) for name, value in fields]),
                           headers={"Content-Type": "multipart/form-data; boundary=" + BOUNDARY})

    status, _, _ = form("POST", "/1/api/playlists", [("title", "Wire")])
    checks.check("a playlist is created from form data", status == 200)
    status, _, body = sim.get("/1/api/playlists", SESSION)
    playlists = json.loads(body).get("playlists", []) if status == 200 else []
    checks.check("and listed after the demo's", [p.get("title") for p in playlists] ==
                 ["Morning", "Wire"], body)
    status, _, body = form("POST", "/1/api/playlists", [("name", "x")])
    checks.check("a missing title", status == 500 and
                 b"Request missing form data: title." in body, body)
    status, _, body = sim.get("/1/api/files/audio", SESSION)
    audio = json.loads(body)["files"][0]["fileGuid"]
    status, _, body = form("PUT", "/1/api/playlists/add_entry/playlist-2",
                           [("fileGuid", audio), ("position", "0")])
    checks.check("an uploaded audio file is added", status == 200, body)
    status, _, body = sim.get("/1/api/playlists/playlist-2", SESSION)
    checks.check("and the playlist shows it with its file", status == 200 and
                 json.loads(body) == {"title": "Wire", "playlistEntries": [
                     {"playlistEntryGuid": "e001", "file": listed[0]}]}, body)
    status, _, body = form("PUT", "/1/api/playlists/add_entry/playlist-2",
                           [("fileGuid", "no-such-file"), ("position", "0")])
    checks.check("the player's refusal", status == 500 and
                 b"MPlayer Error! no audio file no-such-file" in body, body)
    status, _, _ = form("PUT", "/1/api/playlists/playlist-2", [("title", "Renamed")])
    status2, _, _ = sim.request("DELETE", "/1/api/playlists/playlist-1", SESSION)
    status3, _, body = sim.get("/1/api/playlists", SESSION)
    checks.check("rename and delete", status == 200 and status2 == 200 and
                 [p.get("title") for p in json.loads(body)["playlists"]] == ["Renamed"], body)

    # Certificates, over HTTPS.
    old = served_certificate(sim)
    certificate, key = openssl_pair(sim, "new", "kelo-renewed")
    status, _, body = upload(sim, "keloCertificates", "ONBOARD_FILESYSTEM",
                             [("file", "only.crt", certificate)], tls=True)
    checks.check("a certificate without its key is refused by the listener", status == 500 and
                 b"Certificate files error: only one file is uploaded, it should contain both "
                 b"certificate and private key, but it doesn't" in body, body)
    uploaded = os.path.join(onboard, "certificates/uploaded")
    checks.check("and the uploaded file is gone", os.listdir(uploaded) == [], os.listdir(uploaded))

    status, _, body = upload(sim, "keloCertificates", "ONBOARD_FILESYSTEM",
                             [("file", "server.crt", certificate), ("file", "server.key", key)],
                             tls=True)
    checks.check("a certificate and its key are taken", status == 200, body)
    checks.check("the simulator restarts", wire.wait_for(lambda: "tavel-sim: restarting" in
                                                    sim.output(), 10), sim.output()[-2000:])
    served = None
    deadline = time.time() + 20
    while time.time() < deadline:
        try:
            served = served_certificate(sim)
            if served != old:
                break
        except OSError:
            pass
        time.sleep(0.2)
    checks.check("the new certificate is served on the HTTPS port after the restart",
                 served == ssl.PEM_cert_to_DER_cert(certificate.decode()), sim.output()[-2000:])
    checks.check("the upload folder is empty again", os.listdir(uploaded) == [])
    checks.check("the server's files were rewritten in PEM",
                 open(sim.path("server.crt"), "rb").read().strip() == certificate.strip())


if __name__ == "__main__":
    sys.exit(wire.main(run))
