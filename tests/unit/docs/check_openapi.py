#!/usr/bin/python3
"""check_openapi.py DOCUMENT: checks the API document as YAML and as an OpenAPI 3.0.3 outline.

- It parses as YAML (Debian's python3-yaml), with no key given twice in one mapping.
- Its structure holds what the document's readers need: the OpenAPI version, info, paths whose
  operations all have responses, parameters with a name, a place and a schema, a declared path
  parameter for every "{name}" of a path, unique operation ids, every local "$ref" pointing at
  something, and WebSocket endpoints with their handshake, messages and close codes.
- Every example given for a JSON body fits that body's schema (Debian's python3-jsonschema).
- The fixed style of the file holds: the line-by-line reading of `paths` and `x-websockets`
  that the router test does gives exactly what the YAML parser gives.

Prints one line per problem and exits 1 when there is any.
"""
import json
import re
import sys

import yaml

try:
    import jsonschema
except ImportError:
    print("python3-jsonschema is missing: run scripts/setup.sh")
    sys.exit(2)

METHODS = {"get", "put", "post", "delete", "patch", "options", "head", "trace"}
PATH_ITEM_FIELDS = {"summary", "description", "parameters"}
WEBSOCKET_FIELDS = {"summary", "description", "parameters", "x-handshake", "x-messages",
                    "x-close-codes"}
PARAMETER_PLACES = {"query", "header", "path", "cookie"}

problems = []


def problem(text):
    problems.append(text)


class UniqueKeyLoader(yaml.SafeLoader):
    """A safe loader that refuses a key given twice in one mapping (PyYAML keeps the last)."""


def construct_unique_mapping(loader, node, deep=False):
    seen = set()
    for key_node, _ in node.value:
        key = loader.construct_object(key_node, deep=deep)
        if key in seen:
            raise yaml.constructor.ConstructorError(
                None, None, "key %r given twice" % (key,), key_node.start_mark)
        seen.add(key)
    return loader.construct_mapping(node, deep)


UniqueKeyLoader.add_constructor(yaml.resolver.BaseResolver.DEFAULT_MAPPING_TAG,
                                construct_unique_mapping)


def resolve(document, ref):
    """The node a local "$ref" names, or None."""
    if not ref.startswith("#/"):
        return None
    node = document
    for part in ref[2:].split("/"):
        part = part.replace("~1", "/").replace("~0", "~")
        if not isinstance(node, dict) or part not in node:
            return None
        node = node[part]
    return node


def deref(document, node):
    while isinstance(node, dict) and "$ref" in node:
        node = resolve(document, node["$ref"])
    return node


def check_refs(document, node, where):
    if isinstance(node, dict):
        for key, value in node.items():
            if key == "$ref":
                if not isinstance(value, str) or resolve(document, value) is None:
                    problem("%s: $ref %r points at nothing" % (where, value))
            else:
                check_refs(document, value, "%s/%s" % (where, key))
    elif isinstance(node, list):
        for index, value in enumerate(node):
            check_refs(document, value, "%s/%d" % (where, index))


def check_parameters(document, parameters, where):
    declared = {}
    if not isinstance(parameters, list):
        problem("%s: parameters must be a list" % where)
        return declared
    for index, parameter in enumerate(parameters):
        parameter = deref(document, parameter)
        at = "%s/parameters/%d" % (where, index)
        if not isinstance(parameter, dict):
            problem("%s: not a parameter" % at)
            continue
        if not isinstance(parameter.get("name"), str):
            problem("%s: no name" % at)
        if parameter.get("in") not in PARAMETER_PLACES:
            problem("%s: 'in' must be one of %s" % (at, sorted(PARAMETER_PLACES)))
        if "schema" not in parameter and "content" not in parameter:
            problem("%s: neither schema nor content" % at)
        if parameter.get("in") == "path" and parameter.get("required") is not True:
            problem("%s: a path parameter must be required" % at)
        declared[(parameter.get("name"), parameter.get("in"))] = parameter
    return declared


def check_operation(document, path, method, operation, path_parameters, operation_ids):
    where = "paths/%s/%s" % (path, method)
    if not isinstance(operation, dict):
        problem("%s: not an operation" % where)
        return
    parameters = dict(path_parameters)
    parameters.update(check_parameters(document, operation.get("parameters", []), where))
    for name in re.findall(r"\{([^}]*)\}", path):
        if (name, "path") not in parameters:
            problem("%s: no path parameter %r declared" % (where, name))
    operation_id = operation.get("operationId")
    if operation_id is not None:
        if operation_id in operation_ids:
            problem("%s: operationId %r used twice" % (where, operation_id))
        operation_ids.add(operation_id)
    responses = operation.get("responses")
    if not isinstance(responses, dict) or not responses:
        problem("%s: no responses" % where)
        return
    for code, response in responses.items():
        if not (code == "default" or re.fullmatch(r"[1-5][0-9X]{2}", str(code))):
            problem("%s: response key %r is not a status code (quote it: '200')" % (where, code))
        response = deref(document, response)
        if not isinstance(response, dict) or not isinstance(response.get("description"), str):
            problem("%s/responses/%s: no description" % (where, code))


def media_types(document):
    """(where, media type object) of every request body and response of the document."""
    found = []
    components = document.get("components", {})
    for kind in ("requestBodies", "responses"):
        for name, item in components.get(kind, {}).items():
            for media, body in (item.get("content") or {}).items():
                found.append(("components/%s/%s/%s" % (kind, name, media), body))
    for path, item in document.get("paths", {}).items():
        for method in METHODS & set(item):
            operation = item[method]
            bodies = [("requestBody", operation.get("requestBody", {}))]
            bodies += [("responses/%s" % code, response)
                       for code, response in operation.get("responses", {}).items()]
            for label, body in bodies:
                if "$ref" in body:
                    continue  # checked with its component
                for media, content in (body.get("content") or {}).items():
                    found.append(("paths/%s/%s/%s/%s" % (path, method, label, media), content))
    return found


def check_examples(document):
    """Every example of a JSON media type fits its schema."""
    checked = 0
    for where, content in media_types(document):
        if "json" not in where.rsplit("/", 1)[-1] or "schema" not in content:
            continue
        schema = dict(content["schema"])
        schema["components"] = document.get("components", {})
        validator = jsonschema.Draft4Validator(schema)
        examples = dict((content.get("examples") or {}).items())
        if "example" in content:
            examples["example"] = {"value": content["example"]}
        for name, example in examples.items():
            example = deref(document, example)
            if not isinstance(example, dict) or "value" not in example:
                problem("%s/examples/%s: no value" % (where, name))
                continue
            for error in validator.iter_errors(example["value"]):
                problem("%s/examples/%s: %s at %s" % (where, name, error.message,
                                                      "/".join(map(str, error.path))))
            checked += 1
    return checked


def check_websockets(document):
    websockets = document.get("x-websockets")
    if not isinstance(websockets, dict):
        problem("x-websockets: missing or not a mapping")
        return
    for path, endpoint in websockets.items():
        where = "x-websockets/%s" % path
        if not isinstance(endpoint, dict):
            problem("%s: not a mapping" % where)
            continue
        for field in ("summary", "x-handshake", "x-messages", "x-close-codes"):
            if field not in endpoint:
                problem("%s: no %s" % (where, field))
        check_parameters(document, endpoint.get("parameters", []), where)
        messages = endpoint.get("x-messages")
        if not isinstance(messages, list) or not messages:
            problem("%s: x-messages must be a list of at least one message" % where)
        else:
            for index, message in enumerate(messages):
                message = deref(document, message)
                if not isinstance(message, dict) or not {"direction", "frame"} <= set(message):
                    problem("%s/x-messages/%d: needs direction and frame" % (where, index))
                elif message.get("frame") == "Binary" and "message" not in message:
                    problem("%s/x-messages/%d: a Binary frame names its .proto message"
                            % (where, index))
        codes = endpoint.get("x-close-codes")
        if not isinstance(codes, list):
            problem("%s: x-close-codes must be a list" % where)
        else:
            for index, code in enumerate(codes):
                code = deref(document, code)
                if not isinstance(code, dict) or not {"code", "when"} <= set(code):
                    problem("%s/x-close-codes/%d: needs code and when" % (where, index))


def outline_by_lines(text):
    """The reading of the router test (tests/unit/docs/OpenApiOutline.cpp), for documents that
    keep the fixed style: (path -> methods, WebSocket paths)."""
    operations, websockets = {}, set()
    section, current = None, None
    for line in text.splitlines():
        stripped = line.rstrip(" \r")
        content = stripped.lstrip(" ")
        indent = len(stripped) - len(content)
        if not content or content.startswith("#"):
            continue
        if indent == 0:
            key = content.split(":", 1)[0]
            section = key if key in ("paths", "x-websockets") else None
            current = None
        elif section and indent == 2:
            current = content[:-1].strip("'\"")
            if section == "paths":
                operations.setdefault(current, set())
            else:
                websockets.add(current)
        elif section == "paths" and indent == 4:
            key = content.split(":", 1)[0]
            if key in METHODS:
                operations[current].add(key)
    return operations, websockets


def main():
    if len(sys.argv) != 2:
        print(__doc__)
        return 2
    name = sys.argv[1]
    with open(name, encoding="utf-8") as handle:
        text = handle.read()
    if "\t" in text:
        problem("%s: holds a tab" % name)
    try:
        document = yaml.load(text, Loader=UniqueKeyLoader)
    except yaml.YAMLError as error:
        print("%s: not valid YAML: %s" % (name, error))
        return 1
    if not isinstance(document, dict):
        print("%s: not a mapping at the top" % name)
        return 1

    if document.get("openapi") != "3.0.3":
        problem("openapi must be the text '3.0.3'")
    info = document.get("info")
    if not isinstance(info, dict) or not isinstance(info.get("title"), str) or \
            not isinstance(info.get("version"), str):
        problem("info needs a title and a version, both texts")
    check_refs(document, document, "#")

    paths = document.get("paths")
    if not isinstance(paths, dict) or not paths:
        problem("paths: missing or empty")
        paths = {}
    operation_ids = set()
    for path, item in paths.items():
        if not isinstance(path, str) or not path.startswith("/"):
            problem("paths/%s: a path starts with '/'" % path)
            continue
        if not isinstance(item, dict):
            problem("paths/%s: not a mapping" % path)
            continue
        unknown = set(item) - METHODS - PATH_ITEM_FIELDS
        if unknown:
            problem("paths/%s: unknown keys %s" % (path, sorted(unknown)))
        if not METHODS & set(item):
            problem("paths/%s: no operation" % path)
        path_parameters = check_parameters(document, item.get("parameters", []),
                                           "paths/%s" % path)
        for method in sorted(METHODS & set(item)):
            check_operation(document, path, method, item[method], path_parameters,
                            operation_ids)
    check_websockets(document)
    for path, endpoint in (document.get("x-websockets") or {}).items():
        unknown = set(endpoint or {}) - WEBSOCKET_FIELDS
        if unknown:
            problem("x-websockets/%s: unknown keys %s" % (path, sorted(unknown)))
    examples = check_examples(document)
    if examples == 0:
        problem("no example of a JSON body was found to check")

    by_lines = outline_by_lines(text)
    by_yaml = ({path: METHODS & set(item) for path, item in paths.items()},
               set(document.get("x-websockets") or {}))
    if by_lines != by_yaml:
        problem("the fixed style is broken: line by line the paths read %s and %s, YAML reads "
                "%s and %s" % (json.dumps({k: sorted(v) for k, v in by_lines[0].items()}),
                               sorted(by_lines[1]),
                               json.dumps({k: sorted(v) for k, v in by_yaml[0].items()}),
                               sorted(by_yaml[1])))

    for line in problems:
        print("%s: %s" % (name, line))
    print("%s: %d paths, %d WebSocket endpoints, %d examples checked, %d problems"
          % (name, len(paths), len(document.get("x-websockets") or {}), examples, len(problems)))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
