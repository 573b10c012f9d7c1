"""The kit's bill of materials in SPDX 2.3: its files, what is linked into each DLL, and what built it."""
import hashlib
import json
import re
import time
import urllib.parse
import uuid

NAME = "sbom.spdx.json"
DLL_FOLDERS = {"x86": "i686", "x64": "x86_64"}


def identifier(*words):
    """SPDX takes letters, digits, dots and dashes"""
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.]", "-", "-".join(words).replace("+", "x"))


def file_entry(name, data):
    return {
        "SPDXID": identifier("file", name),
        "fileName": "./" + name,
        "checksums": [{"algorithm": "SHA1", "checksumValue": hashlib.sha1(data).hexdigest()},
                      {"algorithm": "SHA256", "checksumValue": hashlib.sha256(data).hexdigest()}],
        "licenseConcluded": "NOASSERTION",
        "copyrightText": "NOASSERTION",
    }


def package_url(owner, version):
    return "pkg:deb/debian/" + "@".join(urllib.parse.quote(word, safe="") for word in (owner, version))


def debian_package(spdxId, name, owner, version, terms, comment):
    return {
        "SPDXID": spdxId,
        "name": name,
        "versionInfo": version,
        "supplier": "Organization: Debian",
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "licenseConcluded": "NOASSERTION",
        "licenseDeclared": terms,
        "copyrightText": "NOASSERTION",
        "comment": comment,
        "externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                          "referenceLocator": package_url(owner, version)}],
    }


def project_package(version, files):
    """the package that the kit is; its verification code is the digest of its files' digests, in their order"""
    digests = sorted(entry["checksums"][0]["checksumValue"] for entry in files)
    return {
        "SPDXID": "SPDXRef-kestapi",
        "name": "kestapi",
        "versionInfo": version,
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": True,
        "packageVerificationCode": {
            "packageVerificationCodeValue": hashlib.sha1("".join(digests).encode()).hexdigest(),
            "packageVerificationCodeExcludedFiles": ["./" + NAME, "./SHA256SUMS"],
        },
        "licenseConcluded": "NOASSERTION",
        "licenseDeclared": "NOASSERTION",
        "copyrightText": "NOASSERTION",
    }


def relationship(one, kind, other):
    return {"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}


def document(version, when, files, linked, tools):
    """The text of the document.

    when: seconds since 1970; files: name -> bytes, all but this document and the checksums; linked: folder of a DLL ->
    its linked.Components; tools: folder of a DLL -> (name, Debian package, version) of each tool that made it.
    """
    entries = [file_entry(name, data) for name, data in sorted(files.items())]
    packages = [project_package(version, entries)]
    relations = [relationship("SPDXRef-DOCUMENT", "DESCRIBES", "SPDXRef-kestapi")]
    relations += [relationship("SPDXRef-kestapi", "CONTAINS", entry["SPDXID"]) for entry in entries]
    for folder in DLL_FOLDERS:
        dll = identifier("file", f"{folder}/KESTAPI.DLL")
        for part in linked[folder]:
            spdxId = identifier(folder, part.name)
            texts = ", ".join(f"licenses/{text}" for text in part.texts)
            comment = f"In the DLL is some of: {', '.join(sorted(part.files))}. Terms: {texts}."
            packages.append(debian_package(spdxId, part.name, part.owner, part.version, part.terms, comment))
            relations.append(relationship(dll, "STATIC_LINK", spdxId))
        for name, owner, toolVersion in tools[folder]:
            spdxId = identifier(folder, "tool", name)
            comment = "Built the DLL or its import libraries."
            packages.append(debian_package(spdxId, name, owner, toolVersion, "NOASSERTION", comment))
            relations.append(relationship(spdxId, "BUILD_TOOL_OF", dll))
    content = {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"kestapi-{version}-windows",
        "creationInfo": {
            "created": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(when)),
            "creators": ["Tool: package"],
        },
        "packages": packages,
        "files": entries,
        "relationships": relations,
    }
    # The same content has the same name, another one another name.
    digest = json.dumps(content, sort_keys=True)
    content["documentNamespace"] = "urn:uuid:" + str(uuid.uuid5(uuid.NAMESPACE_OID, digest))
    return json.dumps(content, indent=1) + "\n"
