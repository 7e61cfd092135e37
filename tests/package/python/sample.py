"""A host in strict types."""

import re
from typing import Optional

import korvane


def replay(stored: bytes) -> Optional[str]:
    with korvane.Session("korvane.log") as session:
        target = session.window(title=re.compile("^Order"), timeout=1).target(korvane.TargetRecord(stored))
        target.record.identification_method = korvane.Method.TREE_PATH
        try:
            target.paste("Ada", timeout=0.5)
        except korvane.FailedError as error:
            print(int(error.code), error.function, *error.log, sep="\n")
            raise
        return None if korvane.is_cancelled() else target.text()


def refused(record: korvane.TargetRecord) -> None:
    korvane.click_target(record, "Order form")  # type: ignore[arg-type]
