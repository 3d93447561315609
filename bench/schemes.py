"""The schemes of the benchmarks, as a main settings document for QELM and as what their peers read.

The rules are tables here, so that a peer cannot be given others than QELM has: each scheme is written for both.
"""

import itertools

KEEP = "beginner"
AUDIENCES, PRODUCTS = ["beginner", "expert", "admin"], ["P300", "P200", "P100"]
ADVANCED = ("level", "advanced")

# Twenty filters, no two of which keep the same: one to three attributes, each with the one value that stays.
FILTERS = [
    [("audience", audience), *product, *level]
    for audience, product, level in itertools.product(
        AUDIENCES, [[], *([("product", product)] for product in PRODUCTS)], [[], [("level", "basic")]])
][:20]

# Twenty rules, the narrower ones first; all conditions of a rule have to hold, and the first rule that fits counts.
# Each has a mark of its own, a color with a kind of line.
CONDITIONS = [
    *[[("audience", audience), ("product", product)] for audience in AUDIENCES for product in PRODUCTS],
    *[[("audience", audience), ADVANCED] for audience in AUDIENCES],
    *[[("product", product), ADVANCED] for product in PRODUCTS],
    *[[("product", product)] for product in PRODUCTS],
    [("audience", "beginner")],
    [("audience", "expert")],
]
COLORS = ["Red", "Green", "Blue", "Cyan", "Magenta", "Yellow", "White"]
LINES = {"single": 3, "double": 4, "numeric": 6}  # the style of that number
MARKS = list(itertools.product(LINES, COLORS))[: len(CONDITIONS)]

ALLOWED = {"audience": ["beginner", "expert"], "product": ["P100", "P200"], "level": ["basic"]}


def element(name, *content):
    return f"<{name}>{''.join(content)}</{name}>"


def attributes(conditions):
    """Attribute elements with their values; a condition is (name, value or list of values)."""
    return "".join(
        element("Attribute", element("Name", name),
                *(element("Value", value) for value in ([values] if isinstance(values, str) else values)))
        for name, values in conditions)


def scheme(name, content):
    return element("Scheme", element("SchemeSettings", element("Name", name),
                                     element("SpaceDelimitedVals", "True")), content) + "\n"


def rule(line, color, conditions):
    settings = element("RuleSettings", element("Name", color), element("Style", str(LINES[line])),
                       element("MatchAll", "True"))
    return element("Rule", settings, attributes(conditions))


def category(name, filters, coloring="", validation=""):
    return element("SchemeCategory", element("CategorySettings", element("Name", name)),
                   element("FilterSchemes", *filters), element("ColoringSchemes", coloring),
                   element("ValidationSchemes", validation))


def write_settings(path, categories):
    path.write_text('<?xml version="1.0" encoding="UTF-8"?>\n' + element(
        "QELM_MainSettings", element("SchemeCategories", *categories),
        "<SchemeCategories_XPath/><AttributeList/><ColorList/><XPathHistory/>") + "\n")


def write_all_settings(folder):
    """keep.xml with the one scheme Bench/Keep. schemes.xml with Bench/Color and Bench/Valid too, and the categories
    All, which has all filters, and One, which has the first."""
    keep = scheme("Keep", attributes([("audience", KEEP)]))
    write_settings(folder / "keep.xml", [category("Bench", [keep])])
    filters = [scheme(f"S{number:02}", attributes(conditions)) for number, conditions in enumerate(FILTERS, 1)]
    rules = "".join(rule(*mark, conditions) for mark, conditions in zip(MARKS, CONDITIONS))
    write_settings(folder / "schemes.xml", [
        category("Bench", [keep], scheme("Color", rules), scheme("Valid", attributes(ALLOWED.items()))),
        category("All", filters), category("One", filters[:1])])


STYLESHEET = """<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
{output}
{templates}
</xsl:stylesheet>
"""
NO_VALUE = "''"
COPY = """<xsl:template match="@*|node()"><xsl:copy><xsl:apply-templates select="@*|node()"/></xsl:copy></xsl:template>
"""


def write_marking(path, inheriting=""):
    """A stylesheet that says with an attribute `mark` which rule an element gets. Elements of the one name take the
    attributes that they lack from above, as cross-references do in FrameMaker."""
    def template(match, attribute):
        def has(name, value):
            return f"contains(concat(' ', {attribute.format(name)}, ' '), ' {value} ')"

        tests = "".join(f'<xsl:when test="{" and ".join(has(*condition) for condition in conditions)}">'
                        f'<xsl:attribute name="mark">{line} {color}</xsl:attribute></xsl:when>\n'
                        for (line, color), conditions in zip(MARKS, CONDITIONS))
        return (f'<xsl:template match="{match}"><xsl:copy><xsl:choose>{tests}</xsl:choose>'
                '<xsl:apply-templates select="@*|node()"/></xsl:copy></xsl:template>\n')

    templates = template("*[@audience or @product or @level]", "@{}")
    if inheriting:
        templates += template(inheriting, "ancestor-or-self::*[@{0}][1]/@{0}")
    path.write_text(STYLESHEET.format(output='<xsl:output method="xml" encoding="UTF-8"/>', templates=COPY + templates))


def write_checking(path):
    """A stylesheet that lists what violates the four rules: rule, element, attribute and value of each."""
    def line(number, name, value):
        return (f'<xsl:value-of select="concat(\'{number} \', name(), \' {name} \', {value}, \'&#10;\')"/>')

    def words(name, test):
        return f"str:tokenize(@{name})[{test}]"

    checks = ""
    for name, allowed in ALLOWED.items():
        foreign = words(name, " and ".join(f". != '{value}'" for value in allowed))
        inner = words(name, f"not(contains(concat(' ', $above, ' '), concat(' ', ., ' ')))")
        checks += (
            f'<xsl:if test="@{name}"><xsl:variable name="foreign" select="{foreign}"/>'
            f'<xsl:if test="$foreign">{line(1, name, "$foreign[1]")}</xsl:if>'
            f'<xsl:variable name="holder" select="ancestor::*[@{name}][1]"/>'
            f'<xsl:variable name="above" select="$holder/@{name}"/>'
            f'<xsl:if test="normalize-space($above)"><xsl:variable name="other" select="{inner}"/>'
            f'<xsl:if test="$other">{line(2, name, "$other[last()]")}</xsl:if>'
            f'<xsl:if test="not(normalize-space(@{name}))">{line(3, name, NO_VALUE)}</xsl:if></xsl:if>'
            f'<xsl:if test="not(normalize-space(@{name}))">{line(4, name, NO_VALUE)}</xsl:if></xsl:if>\n')
    path.write_text(STYLESHEET.format(
        output='<xsl:output method="text"/>',
        templates='<xsl:template match="text()"/><xsl:template match="*[@audience or @product or @level]">\n'
        + checks + '<xsl:apply-templates/></xsl:template>').replace(
            'Transform"', 'Transform" xmlns:str="http://exslt.org/strings"', 1))


def filter_arguments(conditions):
    """For the peers: attribute and value of each condition, in one argument."""
    return ",".join(f"{name}={value}" for name, value in conditions)
