"""What is checked of the documents in every package."""
import os
import pathlib
import re


def broken_links(directory):
    """The relative links of the pages below a directory whose aim is not there."""
    return [(str(page), link) for page in pathlib.Path(directory).rglob("*.md")
            for link in re.findall(r"\]\(([^)#]+)[^)]*\)", page.read_text("utf-8"))
            if "://" not in link and not os.path.exists(page.parent / link)]
