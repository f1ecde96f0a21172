#!/usr/bin/python3
"""TLS in front of a test's own HTTP server, with certificates that a client has to check.

usage: tls_servers.py HTTP_PORT

Listens on one port of 127.0.0.1 for each kind of certificate; forwards one request without a body per
connection to HTTP_PORT, and returns the response. Prints the ports, the issuer's certificate and "ready";
runs as long as the test keeps a connection to the control port open.
"""
import base64
import os
import secrets
import socket
import ssl
import subprocess
import sys
import tempfile
import threading

CONTROL_TIMEOUT = 30  # for the test to make its connection; everything ends with the process

CA_CONFIG = """
[ca]
default_ca = issuer
[issuer]
new_certs_dir = {folder}
database = {folder}/index
serial = {folder}/serial
certificate = {folder}/root.pem
private_key = {folder}/root.key
default_md = sha256
policy = any
unique_subject = no
[any]
commonName = supplied
[leaf]
basicConstraints = critical,CA:FALSE
keyUsage = critical,digitalSignature,keyEncipherment
extendedKeyUsage = serverAuth
subjectAltName = DNS:{name}
"""

VALID = ("20200101000000Z", "20491231000000Z")
EXPIRED = ("20200101000000Z", "20200201000000Z")

# kind: name in the certificate, validity, whether the root issues it
KINDS = {
    "trusted": ("localhost", VALID, True),
    "self_signed": ("localhost", VALID, False),
    "expired": ("localhost", EXPIRED, True),
    "wrong_name": ("elsewhere.example", VALID, True),
    "all_faults": ("elsewhere.example", EXPIRED, False),
}


def openssl(*arguments):
    subprocess.run(["openssl", *arguments], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)


def make_root(folder):
    # A unique name: a root that an earlier run has left must not be used in its place.
    openssl("req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-sha256",
            "-subj", f"/CN=Test issuer {secrets.token_hex(8)}", "-addext", "keyUsage=critical,keyCertSign,cRLSign",
            "-keyout", f"{folder}/root.key", "-out", f"{folder}/root.pem")


def make_certificate(folder, kind, name, validity, by_root):
    with open(f"{folder}/ca.cnf", "w") as config:
        config.write(CA_CONFIG.format(folder=folder, name=name))
    openssl("req", "-new", "-key", f"{folder}/leaf.key", "-subj", f"/CN={name}", "-out", f"{folder}/{kind}.csr")
    signer = [] if by_root else ["-selfsign", "-keyfile", f"{folder}/leaf.key"]
    openssl("ca", "-batch", "-config", f"{folder}/ca.cnf", "-extensions", "leaf", "-notext", *signer,
            "-startdate", validity[0], "-enddate", validity[1],
            "-in", f"{folder}/{kind}.csr", "-out", f"{folder}/{kind}.pem")


def make_certificates(folder):
    make_root(folder)
    # One key for all servers, because generating keys takes time.
    openssl("genrsa", "-out", f"{folder}/leaf.key", "2048")
    with open(f"{folder}/index", "w"):
        pass
    with open(f"{folder}/serial", "w") as serial:
        serial.write("1000\n")
    for kind, properties in KINDS.items():
        make_certificate(folder, kind, *properties)


def read_request(connection):
    request = b""
    while b"\r\n\r\n" not in request:
        data = connection.recv(65536)
        if not data:
            raise ConnectionError("the client has disconnected")
        request += data
    return request


def serve(connection, context, http_port):
    try:
        # The request is read completely before the response begins: one TLS connection serves one thread only.
        with context.wrap_socket(connection, server_side=True) as secure, \
                socket.create_connection(("127.0.0.1", http_port)) as plain:
            plain.sendall(read_request(secure))
            while data := plain.recv(65536):
                secure.sendall(data)
            secure.unwrap()
    except OSError:
        pass  # a client that rejects the certificate disconnects


def refuse_tls(connection):
    with connection:
        connection.recv(65536)
        connection.sendall(b"HTTP/1.0 400 Bad Request\r\n\r\n")


def listen(kind, answer, *arguments):
    listener = socket.create_server(("127.0.0.1", 0))

    def accept_all():
        while True:
            connection, _ = listener.accept()
            threading.Thread(target=answer, args=(connection, *arguments), daemon=True).start()

    threading.Thread(target=accept_all, daemon=True).start()
    print(kind, listener.getsockname()[1])


def main():
    http_port = int(sys.argv[1])
    control = socket.create_server(("127.0.0.1", 0))
    control.settimeout(CONTROL_TIMEOUT)
    with tempfile.TemporaryDirectory() as folder:
        make_certificates(folder)
        for kind in KINDS:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(f"{folder}/{kind}.pem", f"{folder}/leaf.key")
            listen(kind, serve, context, http_port)
        listen("not_tls", refuse_tls)
        with open(f"{folder}/root.pem") as root:
            encoded = ssl.PEM_cert_to_DER_cert(root.read())
    print("root", base64.b64encode(encoded).decode())
    print("control", control.getsockname()[1])
    print("ready", flush=True)
    connection, _ = control.accept()
    connection.recv(1)
    os._exit(0)  # even if connections are still open


main()
