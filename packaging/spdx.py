"""Writes the SPDX document: the files of the portable archive, with checksums, and what is inside
them. The installer brings the same files; it is not described itself."""

import hashlib
import json
import re
import subprocess
import time

import contents


def identifier(kind, name):
    return f"SPDXRef-{kind}-" + re.sub(r"[^A-Za-z0-9.]+", "-", name).strip("-")


def checksums(data):
    return [{"algorithm": name, "checksumValue": hashlib.new(name.lower(), data).hexdigest()}
            for name in ("SHA1", "SHA256")]


def package_version(package):
    answer = subprocess.run(["dpkg-query", "-W", "-f=${Version}", package], capture_output=True,
                            text=True, check=False)
    return answer.stdout if answer.returncode == 0 else "NOASSERTION"


def file_entry(name, data, licence):
    kind = "BINARY" if name.endswith((".dll", ".exe")) else "TEXT"
    return {"SPDXID": identifier("File", name), "fileName": f"./{name}", "fileTypes": [kind],
            "checksums": checksums(data), "licenseConcluded": licence,
            "licenseInfoInFiles": [licence], "copyrightText": "NOASSERTION"}


def library_entry(library):
    return {"SPDXID": identifier("Library", library.name), "name": library.name,
            "versionInfo": package_version(library.package), "downloadLocation": "NOASSERTION",
            "filesAnalyzed": False, "licenseConcluded": library.licence,
            "licenseDeclared": library.licence, "copyrightText": "NOASSERTION"}


def verification_code(files):
    """As the format defines it: the SHA1 of all files' SHA1s, sorted and joined."""
    sums = sorted(entry["checksums"][0]["checksumValue"] for entry in files)
    return hashlib.sha1("".join(sums).encode("ascii")).hexdigest()


def relation(element, kind, other):
    return {"spdxElementId": element, "relationshipType": kind, "relatedSpdxElement": other}


def document(version, items, portable, when):
    """`portable`: name in the archive -> bytes, with the archive's one top folder."""
    licences = {item.name: item.licence for item in items}
    files = []
    for path, data in sorted(portable.items()):
        name = path.partition("/")[2]
        files.append(file_entry(name, data, licences.get(name, "MIT")))
    product = identifier("Package", "GlazelDX")
    code = verification_code(files)
    relations = [relation("SPDXRef-DOCUMENT", "DESCRIBES", product)]
    relations += [relation(product, "CONTAINS", entry["SPDXID"]) for entry in files]
    relations += [relation(identifier("File", user), "STATIC_LINK",
                           identifier("Library", library.name))
                  for library in contents.LIBRARIES for user in library.used_by]
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"GlazelDX-{version}",
        "documentNamespace": f"urn:glazeldx:spdx:{version}:{code}",
        "creationInfo": {
            "created": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(when)),
            "creators": ["Organization: Brellin", f"Tool: GlazelDX-package-{version}"],
        },
        "packages": [{
            "SPDXID": product, "name": "GlazelDX", "versionInfo": version,
            "supplier": "Organization: Brellin", "downloadLocation": "NOASSERTION",
            "filesAnalyzed": True,
            "packageVerificationCode": {"packageVerificationCodeValue": code},
            "licenseConcluded": "MIT", "licenseDeclared": "MIT",
            "licenseInfoFromFiles": sorted({entry["licenseConcluded"] for entry in files}),
            "copyrightText": "Copyright (c) 2026 The Glazel DX authors",
        }] + [library_entry(library) for library in contents.LIBRARIES],
        "files": files,
        "relationships": relations,
    }


def write(path, version, items, portable, when):
    text = json.dumps(document(version, items, portable, when), indent=2, ensure_ascii=False)
    path.write_text(text + "\n", encoding="utf-8")
