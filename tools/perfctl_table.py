#!/usr/bin/env python3
"""Writes perfctl's operation table from the .aidl files of the performance package.

Usage: perfctl_table.py --out HEADER FILE.aidl...

The files are one interface and the parcelables and enums it uses. The header holds:
  * one JSON printer per parcelable (keys are the field names in declaration order);
  * one call thunk per operation, which passes the parsed command-line arguments to the
    method through IPerformance and formats its result;
  * kOperations, the table perfctl dispatches from, in declaration (slot) order.

Only the types perfctl can take from a command line or print are accepted; anything else
fails the build with a message naming the operation or field.
"""

import argparse
import os
import re
import sys

PACKAGE_DECL = re.compile(r"^\s*package\s+([\w.]+)\s*;", re.M)
DECL = re.compile(r"\b(interface|parcelable|enum)\s+(\w+)\s*\{(.*)\}", re.S)
BACKING = re.compile(r'@Backing\(\s*type\s*=\s*"(\w+)"\s*\)')
METHOD = re.compile(r"^(?P<ret>[\w.]+(?:\[\])?)\s+(?P<name>\w+)\s*\((?P<args>.*)\)"
                    r"(?:\s*=\s*(?P<id>\d+))?$", re.S)
ARGUMENT = re.compile(r"^(?:(?P<dir>in|out|inout)\s+)?(?P<type>[\w.]+(?:\[\])?)\s+(?P<name>\w+)$")
FIELD = re.compile(r"^(?P<type>[\w.]+(?:\[\])?)\s+(?P<name>\w+)(?:\s*=.*)?$", re.S)

# Command-line argument types: AIDL name -> (ArgType enumerator, C++ alternative of Value).
ARG_TYPES = {
    "String": ("kString", "std::string"),
    "int": ("kInt", "int32_t"),
    "long": ("kLong", "int64_t"),
    "boolean": ("kBoolean", "bool"),
    "int[]": ("kIntArray", "std::vector<int32_t>"),
}
# Result types printed as text: AIDL name -> C++ type of the out-parameter.
SCALAR_RESULTS = {"String": "std::string", "int": "int32_t", "long": "int64_t", "boolean": "bool"}
# Integral types, printed as JSON numbers; also the backing types enums may declare.
NUMBER_FIELDS = {"byte": "int8_t", "char": "char16_t", "int": "int32_t", "long": "int64_t"}


def fail(message):
    sys.exit("perfctl_table: " + message)


def strip_comments(text):
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    return re.sub(r"//[^\n]*", "", text)


def statements(body):
    return [s.strip() for s in body.split(";") if s.strip()]


class Package:
    def __init__(self):
        self.name = None
        self.interface = None  # (name, [statement])
        self.parcelables = []  # [(name, [(type, field)])], in file order
        self.enums = {}  # name -> backing C++ type

    def add(self, path):
        with open(path) as f:
            code = strip_comments(f.read())
        package = PACKAGE_DECL.search(code)
        decl = DECL.search(code)
        if not package or not decl:
            fail("%s: no package or declaration found" % path)
        if self.name not in (None, package.group(1)):
            fail("%s: package %s differs from %s" % (path, package.group(1), self.name))
        self.name = package.group(1)
        kind, name, body = decl.groups()
        if kind == "interface":
            if self.interface:
                fail("%s: a second interface, %s" % (path, name))
            self.interface = (name, statements(body))
        elif kind == "enum":
            backing = BACKING.search(code)
            self.enums[name] = NUMBER_FIELDS[backing.group(1) if backing else "byte"]
        else:
            fields = []
            for statement in statements(body):
                if statement.startswith("const "):
                    continue
                match = FIELD.match(statement)
                if not match:
                    fail("%s: cannot read field %r" % (path, statement))
                fields.append((self.local(match.group("type")), match.group("name")))
            self.parcelables.append((name, fields))

    def local(self, type_name):
        # Types of this package may be written fully qualified.
        prefix = self.name + "."
        return type_name[len(prefix):] if type_name.startswith(prefix) else type_name

    def cxx(self, name):
        return "::aidl::%s::%s" % (self.name.replace(".", "::"), name)

    def include(self, name):
        return "<aidl/%s/%s.h>" % (self.name.replace(".", "/"), name)


def parcelable_order(package):
    """Orders the parcelables so each printer follows the printers it calls."""
    known = dict(package.parcelables)
    ordered = []

    def visit(name, trail):
        if name in ordered:
            return
        if name in trail:
            fail("parcelable %s contains itself" % name)
        for type_name, _ in known[name]:
            element = type_name[:-2] if type_name.endswith("[]") else type_name
            if element in known:
                visit(element, trail + [name])
        ordered.append(name)

    for name, _ in package.parcelables:
        visit(name, [])
    return ordered


def value_printer(package, type_name, expr, where):
    """Returns the C++ statement that appends expr, of AIDL type type_name, as JSON."""
    parcelables = dict(package.parcelables)
    if type_name == "String":
        return "AppendJsonString(out, %s);" % expr
    if type_name == "boolean":
        return "AppendJsonBool(out, %s);" % expr
    if type_name in NUMBER_FIELDS or type_name in package.enums:
        return "AppendJsonNumber(out, static_cast<int64_t>(%s));" % expr
    if type_name in parcelables:
        return "AppendJson(out, %s);" % expr
    fail("%s: no JSON form for type %s" % (where, type_name))


def parcelable_printer(package, name):
    fields = dict(package.parcelables)[name]
    lines = ["inline void AppendJson(std::string* out, const %s& value) {" % package.cxx(name)]
    lines.append("    out->push_back('{');")
    for index, (type_name, field) in enumerate(fields):
        where = "%s.%s" % (name, field)
        key = ('"%s":' % field) if index == 0 else (',"%s":' % field)
        lines.append('    out->append(R"(%s)");' % key)
        if type_name.endswith("[]"):
            element = type_name[:-2]
            # std::vector<bool> hands out proxies, not bools.
            item = "static_cast<bool>(item)" if element == "boolean" else "item"
            lines.append("    out->push_back('[');")
            lines.append("    for (size_t i = 0; i < value.%s.size(); ++i) {" % field)
            lines.append("        if (i != 0) out->push_back(',');")
            lines.append("        const auto& item = value.%s[i];" % field)
            lines.append("        " + value_printer(package, element, item, where))
            lines.append("    }")
            lines.append("    out->push_back(']');")
        else:
            lines.append("    " + value_printer(package, type_name, "value." + field, where))
    lines.append("    out->push_back('}');")
    lines.append("}")
    return "\n".join(lines)


def read_operations(package):
    name, body = package.interface
    operations = []
    for statement in body:
        if statement.startswith("const "):
            continue
        statement = re.sub(r"^oneway\s+", "", statement)
        match = METHOD.match(statement)
        if not match:
            fail("%s: cannot read method %r" % (name, statement))
        method = match.group("name")
        args = []
        text = match.group("args").strip()
        for arg in ([a.strip() for a in text.split(",")] if text else []):
            parsed = ARGUMENT.match(arg)
            if not parsed:
                fail("%s: cannot read argument %r" % (method, arg))
            if parsed.group("dir") in ("out", "inout"):
                fail("%s: %s arguments cannot come from a command line" %
                     (method, parsed.group("dir")))
            arg_type = package.local(parsed.group("type"))
            if arg_type not in ARG_TYPES:
                fail("%s: argument type %s cannot come from a command line" % (method, arg_type))
            args.append(arg_type)
        result = package.local(match.group("ret"))
        if result != "void" and result not in SCALAR_RESULTS and result not in dict(
                package.parcelables):
            fail("%s: result type %s cannot be printed" % (method, result))
        slot = int(match.group("id")) if match.group("id") else len(operations)
        operations.append((slot, method, args, result))
    slots = [op[0] for op in operations]
    if sorted(slots) != list(range(len(operations))):
        fail("%s: transaction ids are not 0 to %d" % (name, len(operations) - 1))
    return sorted(operations)


def thunk(package, operation):
    slot, method, args, result = operation
    lines = ["inline ::ndk::ScopedAStatus Call%d_%s(IPerformanceType& service," % (slot, method),
             "        [[maybe_unused]] const std::vector<Value>& args,"
             " [[maybe_unused]] std::string* out) {"]
    call = ["std::get<%s>(args[%d])" % (ARG_TYPES[t][1], i) for i, t in enumerate(args)]
    if result == "void":
        lines.append("    return service.%s(%s);" % (method, ", ".join(call)))
    else:
        cxx = SCALAR_RESULTS.get(result) or package.cxx(result)
        lines.append("    %s result{};" % cxx)
        lines.append("    ::ndk::ScopedAStatus status = service.%s(%s);"
                     % (method, ", ".join(call + ["&result"])))
        lines.append("    if (status.isOk()) FormatResult(result, out);")
        lines.append("    return status;")
    lines.append("}")
    return "\n".join(lines)


def header(package, operations):
    iface = package.interface[0]
    out = ["// Generated by tools/perfctl_table.py from the %s .aidl files. Do not edit." %
           package.name, "#pragma once", ""]
    includes = [package.include(iface)] + [package.include(p) for p, _ in package.parcelables]
    out += ["#include %s" % inc for inc in sorted(includes)]
    out += ["", "#include <cstdint>", "#include <string>", "#include <variant>",
            "#include <vector>", "", '#include "Format.h"', '#include "Operation.h"', "",
            "namespace perfctl {", "",
            "using IPerformanceType = %s;" % package.cxx(iface), ""]

    order = parcelable_order(package)
    for name in order:
        out.append("inline void AppendJson(std::string* out, const %s& value);" %
                   package.cxx(name))
    out.append("")
    for name in order:
        out += [parcelable_printer(package, name), ""]
    for name in order:
        out += ["inline void FormatResult(const %s& value, std::string* out) {" % package.cxx(name),
                "    AppendJson(out, value);", "    out->push_back('\\n');", "}", ""]

    for operation in operations:
        out += [thunk(package, operation), ""]
    for slot, method, args, _ in operations:
        if args:
            out.append("inline constexpr ArgType kArgs%d[] = {%s};" % (
                slot, ", ".join("ArgType::" + ARG_TYPES[t][0] for t in args)))
    out.append("")
    out.append("inline constexpr Operation kOperations[] = {")
    for slot, method, args, result in operations:
        arg_list = "kArgs%d, %d" % (slot, len(args)) if args else "nullptr, 0"
        out.append('        {%d, "%s", %s, "%s", &Call%d_%s},' % (
            slot, method, arg_list, result, slot, method))
    out += ["};", "", "}  // namespace perfctl", ""]
    return "\n".join(out)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--out", required=True, help="header to write")
    parser.add_argument("aidl", nargs="+", help="the interface and its parcelables")
    args = parser.parse_args()

    package = Package()
    for path in sorted(args.aidl):
        package.add(path)
    if not package.interface:
        fail("no interface among the input files")
    text = header(package, read_operations(package))

    os.makedirs(os.path.dirname(os.path.abspath(args.out)), exist_ok=True)
    with open(args.out, "w") as f:
        f.write(text)


if __name__ == "__main__":
    main()
