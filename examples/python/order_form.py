"""Captures four elements of the order form, opens the form elsewhere and fills it in by the records."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "bindings" / "python"))

import korvane
import stage

TIMEOUT_MS = 3000


def capture(control):
    record = korvane.capture_target_at_point(*stage.centre_of(control))
    record.identificationMethod = korvane.Method.TREE_PATH
    return bytes(record)  # as it would go into a file


def paste(record, form, text):
    korvane.set_clipboard_text(text)
    korvane.paste_to_target_with_verify_ex(record, form, TIMEOUT_MS)


def main():
    with korvane.Session("korvane.log"):
        stage.open_form(40, 40)
        stored = [capture(control) for control in (stage.NAME, stage.ARTICLE, stage.SUBMIT, stage.STATUS)]

        # Anywhere else, at any later time.
        form = stage.open_form(420, 300)
        name, article, submit, status = map(korvane.TargetRecord.from_buffer_copy, stored)
        korvane.verify_target(name, form)
        paste(name, form, "Renée García")
        paste(article, form, "Brass compass")
        korvane.click_target(submit, form)
        korvane.wait_for_target_contains_partial_text(status, form, "Submitted", TIMEOUT_MS)
        print(korvane.get_target_text(status, form))
        stage.close_form()


if __name__ == "__main__":
    main()
