"""Sessions, windows and targets of the Python package."""

import json
import re

import korvane
import stage


def fails(kind, function, *arguments, **named):
    try:
        function(*arguments, **named)
    except kind as error:
        return error
    raise AssertionError(f"{function.__name__} should have failed")


with korvane.Session("session.log") as session:
    handle = stage.open_form(40, 40)
    form = session.window(title=re.compile("^Order"), process="ORDER_FORM.exe")
    assert (form.handle, form.title, form.process) == (handle, "Order form", "order_form.exe")
    assert "no window with title 'Order' within 0.01 s" in str(
        fails(korvane.NotFoundError, session.window, title="Order", timeout=0.01))
    fails(ValueError, session.window)

    name = form.target_at(*stage.centre_of(stage.NAME))
    assert name.record.identification_method == korvane.Method.AUTOMATION_ID
    # The form itself has no AutomationId.
    assert form.target_at(60, 60).record.identification_method == korvane.Method.TREE_PATH
    name.paste("Ada")
    assert name.text() == "Ada"
    assert (name.check("Ad"), name.check("Ad", exact=True)) == (True, False)
    # What was clicked is under the mouse.
    assert form.target_at_cursor().record.automation_id == name.record.automation_id
    form.target(name.record).type("x")
    name.wait("Adax", exact=True)
    error = fails(korvane.FailedError, name.wait, "never", timeout=0.2)
    assert error.function == "waitForTargetContainsPartialText" and error.log, error
    fails(korvane.InvalidArgumentError, session.window_of(0).focus)

    # A recording of the companion program.
    levels = [{"controlType": t, "className": c, "childIndex": i} for t, c, i in name.record.path]
    target = {"identificationMethod": "tree-path", "automationId": {"units": ["0031", "0030", "0031"]}, "x": name.record.x,
              "y": name.record.y, "hwnd": f"{name.record.hwnd:x}", "pathLength": len(levels), "levels": levels}
    windows = [{"title": "Order form", "class": "OrderForm", "process": "order_form.exe", "rect": [0, 0, 0, 0]}]
    steps = [{"name": "Name", "action": "click", "window": 1, "target": target}]
    with open("order.json", "w", encoding="utf-8") as file:
        json.dump({"korvane": 1, "windows": windows, "steps": steps}, file)
    for step in (1, "Name"):
        recorded = session.target_of_step("order.json", step)
        recorded.record.identification_method = korvane.Method.AUTOMATION_ID
        assert recorded.record == name.record
        recorded.click()
    fails(ValueError, session.target_of_step, "order.json", "Street")
    stage.close_form()
