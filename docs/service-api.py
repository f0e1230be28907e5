#!/usr/bin/env python3
"""Writes docs/openapi.yaml as a page for people: service-api.py openapi.yaml service-api.md"""

import sys

import yaml


def reference(schema):
    """The schema's name, as a link to its section, or its type."""
    if "$ref" in schema:
        name = schema["$ref"].rsplit("/", 1)[1]
        return f"[{name}](#{anchor(name)})"
    if schema.get("type") == "array":
        return "list of " + reference(schema["items"]) if "items" in schema else "list"
    if isinstance(schema.get("additionalProperties"), dict):
        return "object of " + reference(schema["additionalProperties"])
    kind = schema.get("type", "any value")
    if "enum" in schema:
        kind += ": " + ", ".join(f"`{value}`" for value in schema["enum"])
    elif "format" in schema:
        kind += f" ({schema['format']})"
    limits = [f"from {schema['minimum']}" if "minimum" in schema else "",
              f"to {schema['maximum']}" if "maximum" in schema else "",
              f"at most {schema['maxLength']} characters" if "maxLength" in schema else "",
              f"else {schema['default']}" if "default" in schema else ""]
    return ", ".join([kind] + [limit for limit in limits if limit])


def anchor(name):
    return "schema-" + name.lower()


def line(text):
    return " ".join(str(text).split()).replace("|", "\\|")


def text(value):
    return "\n" + str(value).strip() + "\n" if value else ""


def content_of(part):
    for schema in (body["schema"] for body in part.get("content", {}).values()):
        return reference(schema)
    return ""


def operation(method, path, description, components):
    yield f"\n## {method.upper()} {path}\n"
    yield text(description.get("summary")) + text(description.get("description"))
    if description.get("security") == []:
        yield "\nNeeds no token.\n"
    if description.get("parameters"):
        yield "\n| parameter | in | | |\n|---|---|---|---|\n"
        for parameter in description["parameters"]:
            needed = "" if parameter.get("required") else ", may be left out"
            yield (f"| `{parameter['name']}` | {parameter['in']}{needed} | {line(reference(parameter['schema']))} "
                   f"| {line(parameter.get('description', ''))} |\n")
    body = description.get("requestBody")
    if body:
        yield f"\nBody: {content_of(body)}. {line(body.get('description', ''))}\n"
    yield "\n| status | | |\n|---|---|---|\n"
    errors = {}
    for status, response in sorted(description["responses"].items()):
        if "$ref" in response:
            errors.setdefault(response["$ref"].rsplit("/", 1)[1], []).append(status)
        else:
            yield f"| {status} | {content_of(response)} | {line(response.get('description', ''))} |\n"
    for name, statuses in errors.items():
        yield f"| {', '.join(statuses)} | {content_of(components['responses'][name])} | |\n"


def properties(schema, components):
    for part in schema.get("allOf", [schema]):
        if "$ref" in part:
            yield from properties(components["schemas"][part["$ref"].rsplit("/", 1)[1]], components)
        needed = part.get("required", [])
        for key, value in part.get("properties", {}).items():
            yield key, value, key in needed


def schema_section(name, schema, components):
    yield f"\n## {name} {{#{anchor(name)}}}\n" + text(schema.get("description"))
    keys = list(properties(schema, components))
    if keys:
        yield "\n| key | | |\n|---|---|---|\n"
    else:
        yield f"\n{reference(schema)}\n"
    for key, value, needed in keys:
        yield f"| `{key}`{' (always)' if needed else ''} | {line(reference(value))} | {line(value.get('description', ''))} |\n"


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        api = yaml.safe_load(file)
    with open(sys.argv[2], "w", encoding="utf-8") as page:
        page.write(f"# The service's API {{#service-api}}\n{text(api['info']['description'])}\n"
                   "Made from `docs/openapi.yaml`, which tests hold against the service.\n\n")
        for name, response in api["components"]["responses"].items():
            page.write(f"A reply of {content_of(response)}: {line(response['description'])}\n\n")
        page.write("[TOC]\n")
        for path, operations in api["paths"].items():
            for method, description in operations.items():
                if method != "parameters":
                    shared = operations.get("parameters", [])
                    description = dict(description, parameters=shared + description.get("parameters", []))
                    page.writelines(operation(method, path, description, api["components"]))
        for name, schema in api["components"]["schemas"].items():
            page.writelines(schema_section(name, schema, api["components"]))


if __name__ == "__main__":
    main()
