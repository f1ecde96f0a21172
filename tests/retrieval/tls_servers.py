#!/usr/bin/python3
"""TLS in front of a test's own HTTP server, with certificates that a client has to judge.

usage: tls_servers.py HTTP_PORT

Listens on one port of 127.0.0.1 for each kind of certificate; a connection takes one request without a
body, passes it on to HTTP_PORT and the answer back.
Prints the ports, the issuer's certificate and "ready"; lives for as long as the test keeps one
connection to the control port open.
"""
import base64
import os
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

# kind: name in the certificate, validity, issued by the root
KINDS = {
    "trusted": ("localhost", ("20200101000000Z", "20491231000000Z")),
    "expired": ("localhost", ("20200101000000Z", "20200201000000Z")),
    "wrong_name": ("elsewhere.example", ("20200101000000Z", "20491231000000Z")),
}


def openssl(*arguments):
    subprocess.run(["openssl", *arguments], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)


def self_signed(folder, stem, name, *extensions):
    openssl("req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "3650", "-sha256", "-subj", f"/CN={name}",
            "-keyout", f"{folder}/{stem}.key", "-out", f"{folder}/{stem}.pem",
            *[word for extension in extensions for word in ("-addext", extension)])


def issue(folder, kind, name, validity):
    with open(f"{folder}/ca.cnf", "w") as config:
        config.write(CA_CONFIG.format(folder=folder, name=name))
    openssl("req", "-new", "-newkey", "rsa:2048", "-nodes", "-subj", f"/CN={name}",
            "-keyout", f"{folder}/{kind}.key", "-out", f"{folder}/{kind}.csr")
    openssl("ca", "-batch", "-config", f"{folder}/ca.cnf", "-extensions", "leaf", "-notext",
            "-startdate", validity[0], "-enddate", validity[1],
            "-in", f"{folder}/{kind}.csr", "-out", f"{folder}/{kind}.pem")


def make_certificates(folder):
    self_signed(folder, "root", "Test issuer", "keyUsage=critical,keyCertSign,cRLSign")
    self_signed(folder, "self_signed", "localhost", "subjectAltName=DNS:localhost")
    with open(f"{folder}/index", "w"):
        pass
    with open(f"{folder}/serial", "w") as serial:
        serial.write("1000\n")
    for kind, (name, validity) in KINDS.items():
        issue(folder, kind, name, validity)


def read_request(connection):
    request = b""
    while b"\r\n\r\n" not in request:
        data = connection.recv(65536)
        if not data:
            raise ConnectionError("went away")
        request += data
    return request


def serve(connection, context, http_port):
    try:
        # The request is read whole before the answer starts: one TLS connection serves one thread only.
        with context.wrap_socket(connection, server_side=True) as secure, \
                socket.create_connection(("127.0.0.1", http_port)) as plain:
            plain.sendall(read_request(secure))
            while data := plain.recv(65536):
                secure.sendall(data)
            secure.unwrap()
    except OSError:
        pass  # a client that does not like the certificate goes away


def accept_all(listener, context, http_port):
    while True:
        connection, _ = listener.accept()
        threading.Thread(target=serve, args=(connection, context, http_port), daemon=True).start()


def main():
    http_port = int(sys.argv[1])
    control = socket.create_server(("127.0.0.1", 0))
    control.settimeout(CONTROL_TIMEOUT)
    with tempfile.TemporaryDirectory() as folder:
        make_certificates(folder)
        for kind in ["self_signed", *KINDS]:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(f"{folder}/{kind}.pem", f"{folder}/{kind}.key")
            listener = socket.create_server(("127.0.0.1", 0))
            threading.Thread(target=accept_all, args=(listener, context, http_port), daemon=True).start()
            print(kind, listener.getsockname()[1])
        with open(f"{folder}/root.pem") as root:
            encoded = ssl.PEM_cert_to_DER_cert(root.read())
    print("root", base64.b64encode(encoded).decode())
    print("control", control.getsockname()[1])
    print("ready", flush=True)
    connection, _ = control.accept()
    connection.recv(1)
    os._exit(0)  # whatever connections are still open


main()
