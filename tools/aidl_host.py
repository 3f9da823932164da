#!/usr/bin/env python3
"""Generates the host NDK stubs of an AIDL package with the host's older `aidl`.

The host compiler (Android 10) predates several things the interface relies on:
  * the @VintfStability annotation, which is stripped from a scratch copy;
  * enums, whose headers are generated here from their .aidl files;
  * getInterfaceHash, which is added to every generated interface, answering the
    frozen hash of the version being built, as the device's generated code does;
  * a bounded parcelable size: its readFromParcel tests the size before the status of the read
    that sets it, and adds a size that can be as large as INT32_MAX to the start position. The
    status is now tested first, and a size reaching past INT32_MAX is refused;
  * results that start at their type's default: its onTransact declares each `_aidl_return`
    uninitialised, so a method that succeeds without setting it would send stack contents. Each
    is now value-initialised.

Usage: aidl_host.py --src DIR --version N [--hash-file FILE] --out DIR
Without a hash file no interface gets getInterfaceHash.
The .aidl files under DIR are the only input; nothing is copied from them by hand.
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile

ANNOTATION = re.compile(r"@VintfStability\s*|@Backing\([^)]*\)\s*")
ENUM_DECL = re.compile(r"\benum\s+(\w+)\s*\{(.*?)\}", re.S)
INTERFACE_DECL = re.compile(r"\binterface\s+(\w+)\s*\{")
PACKAGE_DECL = re.compile(r"^\s*package\s+([\w.]+)\s*;", re.M)
BACKING = re.compile(r'@Backing\(\s*type\s*=\s*"(\w+)"\s*\)')
BACKING_TYPES = {"byte": "int8_t", "int": "int32_t", "long": "int64_t"}
# The device's generated parcelables give scalar fields the language default; the host compiler
# leaves them uninitialised.
SCALAR_FIELD = re.compile(r"^(  (?:int8_t|int32_t|int64_t|float|double|char16_t|bool) \w+);$", re.M)
SCALAR_DEFAULTS = {"bool": "false", "char16_t": "'\\0'"}
# A result declared in onTransact, before the method fills it in.
RESULT_DECL = re.compile(r"^(\s+\S[^;=]*) _aidl_return;$", re.M)


def aidl_files(src):
    found = []
    for root, dirs, files in os.walk(src):
        # Frozen API dumps live beside the sources and are not part of this version.
        dirs[:] = [d for d in dirs if d != "aidl_api"]
        for name in files:
            if name.endswith(".aidl"):
                found.append(os.path.join(root, name))
    return sorted(found)


def strip_comments(text):
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    return re.sub(r"//[^\n]*", "", text)


def enum_header(package, name, backing, body):
    members = []
    for item in body.split(","):
        item = item.strip()
        if not item:
            continue
        key, _, value = item.partition("=")
        members.append((key.strip(), value.strip()))
    namespaces = ["aidl"] + package.split(".")
    opening = "\n".join("namespace %s {" % ns for ns in namespaces)
    closing = "\n".join("}  // namespace %s" % ns for ns in reversed(namespaces))
    lines = ["#pragma once", "", "#include <cstdint>", "#include <string>", "", opening]
    lines.append("enum class %s : %s {" % (name, backing))
    lines += ["  %s = %s," % (key, value) for key, value in members]
    lines.append("};")
    lines.append("")
    lines.append("[[nodiscard]] static inline std::string toString(%s val) {" % name)
    lines.append("  switch (val) {")
    for key, _ in members:
        lines.append("  case %s::%s:" % (name, key))
        lines.append('    return "%s";' % key)
    lines.append("  default:")
    lines.append("    return std::to_string(static_cast<%s>(val));" % backing)
    lines.append("  }")
    lines.append("}")
    lines.append(closing)
    lines.append("")
    return "\n".join(lines)


def patch(path, old, new, count=None):
    with open(path) as f:
        text = f.read()
    if old not in text:
        sys.exit("aidl_host: expected text not found in %s: %r" % (path, old))
    if count is not None and text.count(old) != count:
        sys.exit("aidl_host: expected %d matches in %s: %r" % (count, path, old))
    with open(path, "w") as f:
        f.write(text.replace(old, new))


HASH_CASE = """    case (FIRST_CALL_TRANSACTION + 16777213 /*getInterfaceHash*/): {
      std::string _aidl_return;

      ::ndk::ScopedAStatus _aidl_status = _aidl_impl->getInterfaceHash(&_aidl_return);
      _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
      if (_aidl_ret_status != STATUS_OK) break;

      if (!AStatus_isOk(_aidl_status.get())) break;

      _aidl_ret_status = ::ndk::AParcel_writeString(_aidl_out, _aidl_return);
      if (_aidl_ret_status != STATUS_OK) break;

      break;
    }
"""

HASH_METHODS = """::ndk::ScopedAStatus {bp}::getInterfaceHash(std::string* _aidl_return) {{
  binder_status_t _aidl_ret_status = STATUS_OK;
  ::ndk::ScopedAStatus _aidl_status;
  const std::lock_guard<std::mutex> lock(_aidl_cached_hash_mutex);
  if (_aidl_cached_hash != "-1") {{
    *_aidl_return = _aidl_cached_hash;
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
    return _aidl_status;
  }}
  ::ndk::ScopedAParcel _aidl_in;
  ::ndk::ScopedAParcel _aidl_out;

  _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
  if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

  _aidl_ret_status = AIBinder_transact(
    asBinder().get(),
    (FIRST_CALL_TRANSACTION + 16777213 /*getInterfaceHash*/),
    _aidl_in.getR(),
    _aidl_out.getR(),
    0);
  if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && {iface}::getDefaultImpl()) {{
    return {iface}::getDefaultImpl()->getInterfaceHash(_aidl_return);
  }}
  if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

  _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
  if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

  if (!AStatus_isOk(_aidl_status.get())) return _aidl_status;

  _aidl_ret_status = ::ndk::AParcel_readString(_aidl_out.get(), _aidl_return);
  if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

  _aidl_cached_hash = *_aidl_return;
  _aidl_error:
  _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
  return _aidl_status;
}}
::ndk::ScopedAStatus {bn}::getInterfaceHash(std::string* _aidl_return) {{
  *_aidl_return = {iface}::hash;
  return ::ndk::ScopedAStatus(AStatus_newOk());
}}
::ndk::ScopedAStatus {iface}Default::getInterfaceHash(std::string* _aidl_return) {{
  *_aidl_return = "";
  return ::ndk::ScopedAStatus(AStatus_newOk());
}}
"""


def default_scalar_fields(path):
    with open(path) as f:
        text = f.read()

    def initialise(match):
        ctype = match.group(1).split()[0]
        return "%s = %s;" % (match.group(1), SCALAR_DEFAULTS.get(ctype, "0"))

    with open(path, "w") as f:
        f.write(SCALAR_FIELD.sub(initialise, text))


SIZE_READ = """  _aidl_ret_status = AParcel_readInt32(parcel, &_aidl_parcelable_size);
  if (_aidl_parcelable_size < 0) return STATUS_BAD_VALUE;
  if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;
"""
BOUNDED_SIZE_READ = """  _aidl_ret_status = AParcel_readInt32(parcel, &_aidl_parcelable_size);
  if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;
  if (_aidl_parcelable_size < 0) return STATUS_BAD_VALUE;
  if (_aidl_start_pos > INT32_MAX - _aidl_parcelable_size) return STATUS_BAD_VALUE;
"""


def default_results(path):
    with open(path) as f:
        text = f.read()
    text, count = RESULT_DECL.subn(r"\1 _aidl_return{};", text)
    if count == 0:
        sys.exit("aidl_host: no results declared in %s" % path)
    with open(path, "w") as f:
        f.write(text)


def add_interface_hash(out, hdr, package, iface, frozen_hash):
    base = iface[1:] if iface.startswith("I") else iface
    bp, bn = "Bp" + base, "Bn" + base
    rel = package.replace(".", "/")
    header = os.path.join(hdr, "aidl", rel)
    version_decl = "::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return)"
    hash_decl = "::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return)"

    path = os.path.join(header, iface + ".h")
    patch(path, "  static const int32_t version = ",
          '  static inline const std::string hash = "%s";\n'
          "  static const int32_t version = " % frozen_hash, 1)
    patch(path, "virtual %s = 0;" % version_decl,
          "virtual %s = 0;\n  virtual %s = 0;" % (version_decl, hash_decl), 1)
    patch(path, "  %s override;" % version_decl,
          "  %s override;\n  %s override;" % (version_decl, hash_decl), 1)

    path = os.path.join(header, bn + ".h")
    patch(path, "  %s final override;" % version_decl,
          "  %s final override;\n  %s final override;" % (version_decl, hash_decl), 1)

    path = os.path.join(header, bp + ".h")
    patch(path, "#pragma once\n", "#pragma once\n\n#include <mutex>\n", 1)
    patch(path, "  %s override;" % version_decl,
          "  %s override;\n  %s override;" % (version_decl, hash_decl), 1)
    patch(path, "  int32_t _aidl_cached_value = -1;\n",
          "  int32_t _aidl_cached_value = -1;\n"
          '  std::string _aidl_cached_hash = "-1";\n'
          "  std::mutex _aidl_cached_hash_mutex;\n", 1)

    path = os.path.join(out, rel, iface + ".cpp")
    patch(path, "    case (FIRST_CALL_TRANSACTION + 16777214 /*getInterfaceVersion*/): {\n",
          HASH_CASE + "    case (FIRST_CALL_TRANSACTION + 16777214 /*getInterfaceVersion*/): {\n", 1)
    patch(path, "// Source for %s\n" % bn,
          HASH_METHODS.format(bp=bp, bn=bn, iface=iface) + "// Source for %s\n" % bn, 1)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--src", required=True)
    parser.add_argument("--version", required=True)
    parser.add_argument("--hash-file")
    parser.add_argument("--out", required=True)
    parser.add_argument("--aidl", default="aidl")
    args = parser.parse_args()

    frozen_hash = None
    if args.hash_file:
        with open(args.hash_file) as f:
            frozen_hash = f.read().split()[0]
        if not re.fullmatch(r"[0-9a-f]{40}", frozen_hash):
            sys.exit("aidl_host: %s does not hold a 40-digit hash" % args.hash_file)

    src_out = os.path.join(args.out, "src")
    hdr_out = os.path.join(args.out, "include")
    shutil.rmtree(args.out, ignore_errors=True)
    os.makedirs(src_out)
    os.makedirs(hdr_out)

    with tempfile.TemporaryDirectory() as scratch:
        compiled = []
        for path in aidl_files(args.src):
            rel = os.path.relpath(path, args.src)
            with open(path) as f:
                text = f.read()
            code = strip_comments(text)
            package = PACKAGE_DECL.search(code).group(1)
            enum = ENUM_DECL.search(code)
            if enum:
                backing = BACKING.search(code)
                ctype = BACKING_TYPES[backing.group(1) if backing else "byte"]
                target = os.path.join(hdr_out, "aidl", package.replace(".", "/"),
                                      enum.group(1) + ".h")
                os.makedirs(os.path.dirname(target), exist_ok=True)
                with open(target, "w") as f:
                    f.write(enum_header(package, enum.group(1), ctype, enum.group(2)))
                continue
            copy = os.path.join(scratch, rel)
            os.makedirs(os.path.dirname(copy), exist_ok=True)
            with open(copy, "w") as f:
                f.write(ANNOTATION.sub("", text))
            iface = INTERFACE_DECL.search(code)
            compiled.append((copy, package, iface.group(1) if iface else None))

        for copy, package, iface in compiled:
            subprocess.run([args.aidl, "--lang=ndk", "--structured", "-v", args.version,
                            "-I", scratch, "-o", src_out, "-h", hdr_out, copy], check=True)
            name = os.path.splitext(os.path.basename(copy))[0]
            rel = package.replace(".", "/")
            if iface:
                if frozen_hash:
                    add_interface_hash(src_out, hdr_out, package, iface, frozen_hash)
                default_results(os.path.join(src_out, rel, name + ".cpp"))
            else:
                default_scalar_fields(os.path.join(hdr_out, "aidl", rel, name + ".h"))
                patch(os.path.join(src_out, rel, name + ".cpp"), SIZE_READ, BOUNDED_SIZE_READ, 1)


if __name__ == "__main__":
    main()
