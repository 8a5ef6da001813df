"""Sphinx configuration of the manual. docs/build copies the pages to build/docs/tree and sets NU_DOCS_OUT."""

import os
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent / "tools"))

import python_reference  # noqa: E402

OUT = Path(os.environ["NU_DOCS_OUT"])
KATEX = OUT / "npm/node_modules/katex/dist"

project = "Nu"
author = "the Nu developers"
copyright = author
version = release = os.environ.get("NU_VERSION", "3.0.0")

extensions = [
    "myst_parser",
    "breathe",
    "sphinx.ext.autodoc",
    "sphinx.ext.napoleon",
    "sphinx_copybutton",
    "sphinxcontrib.katex",
]
source_suffix = {".md": "markdown"}
exclude_patterns = ["README.md", "node_modules", "generated/include", "ratios.md"]
highlight_language = "none"

myst_enable_extensions = ["amsmath", "attrs_block", "attrs_inline", "colon_fence", "deflist", "dollarmath"]
myst_heading_anchors = 3
myst_dmath_double_inline = True

breathe_projects = {"nu": str(OUT / "doxygen/xml")}
breathe_default_project = "nu"
breathe_domain_by_extension = {"h": "cpp"}
breathe_default_members = ("members",)
cpp_id_attributes = ["NU_EXPORT"]

autodoc_typehints = "signature"
autodoc_member_order = "bysource"
autodoc_preserve_defaults = True
# Its page needs nothing of it but the name.
autodoc_mock_imports = ["dask"]
autodoc_type_aliases = {"ArrayLike": "ArrayLike", "Doubles": "Doubles"}
napoleon_google_docstring = False
napoleon_use_rtype = False
python_use_unqualified_type_names = True

# Formulas are set when the pages are built; style and fonts lie beside the pages.
katex_prerender = True
katex_js_path = str(KATEX / "katex.min.js")
katex_css_path = "katex/katex.min.css"
katex_options = "throwOnError: true, strict: 'error'"

# Pages that another part of the repository brings along.
OPTIONAL = ["get-started", "migration", "python", "c", "inspect-report"]


def drop_absent_pages(app, name, source):
    if name == "index":
        for page in OPTIONAL:
            if not (Path(app.srcdir) / f"{page}.md").exists():
                source[0] = source[0].replace(f"\n{page}\n", "\n")


def read_start_page(app, env, added, changed, removed):
    """The start page names the pages that there are."""
    return ["index"]


def make_accessible(app, name, template, context, doctree):
    """What the theme leaves to be done: levels of headings, and keys that scroll what is wider than the screen."""
    tree = context.get("furo_navigation_tree", "")
    context["furo_navigation_tree"] = tree.replace('role="heading"', 'role="heading" aria-level="2"')
    body = context.get("body", "")
    body = body.replace('<div class="table-wrapper', '<div tabindex="0" class="table-wrapper').replace("<pre>", '<pre tabindex="0">')
    context["body"] = body.replace('<span class="katex-display">', '<span class="katex-display" tabindex="0">')


def shorten_signature(app, what, name, value, options, signature, returned):
    return [text and python_reference.short_types(text) for text in (signature, returned)]


def setup(app):
    python_reference.prepare()
    app.connect("autodoc-process-signature", shorten_signature)
    app.connect("source-read", drop_absent_pages)
    app.connect("env-get-outdated", read_start_page)
    app.connect("html-page-context", make_accessible, priority=900)


html_theme = "furo"
html_title = f"Nu {release}"
html_static_path = ["static", str(OUT / "static")]
html_css_files = ["nu.css"]
html_copy_source = False
html_show_sourcelink = False
html_show_sphinx = False
html_theme_options = {
    "navigation_with_keys": False,
    "top_of_page_buttons": [],
    "light_css_variables": {
        "color-brand-primary": "#0b5394",
        "color-brand-content": "#0b5394",
    },
    "dark_css_variables": {
        "color-brand-primary": "#8ab8f0",
        "color-brand-content": "#8ab8f0",
    },
}
pygments_style = "a11y-high-contrast-light"
pygments_dark_style = "a11y-high-contrast-dark"
