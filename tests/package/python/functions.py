"""What the Python package offers, line by line, after trying what a call can meet."""

import ctypes
import pickle

import korvane
from korvane import records
import stage


def fails(code, function, *arguments):
    try:
        function(*arguments)
    except korvane.Error as error:
        kinds = {-1: korvane.NotFoundError, -2: korvane.InvalidArgumentError, -3: korvane.FailedError}
        assert error.code == code and error.code.name in str(error) and type(error) is kinds[code], error
        assert str(pickle.loads(pickle.dumps(error))) == str(error)
    else:
        raise AssertionError(f"{function.__name__} should have failed")


for structure, name in ((records._Record, "TargetRecord"), (records._Info, "WindowInfo")):
    print(name, ctypes.sizeof(structure))
    for field, _ in structure._fields_:
        print(f"{name}.{field}", getattr(structure, field).offset)
for name in dir(korvane):
    if callable(getattr(korvane, name)) and not name.startswith("_"):
        print("offers", name)

with korvane.Session("binding.log"):
    form = stage.open_form(60, 60)
    name = korvane.capture_target_at_point(*stage.centre_of(stage.NAME))
    again = korvane.TargetRecord(bytes(name))
    assert again == name == pickle.loads(pickle.dumps(name)) and again.automation_id == "101", again
    assert again != korvane.TargetRecord() and "'101'" in repr(again)
    assert name.path[-1].class_name == "Edit"
    assert (name.identification_method, name.hwnd) == (korvane.Method.UNDECIDED, again.hwnd)
    info = korvane.get_window_info(form)
    assert (info.title, info.process_name, info.window) == ("Order form", "order_form.exe", form)
    assert info == pickle.loads(pickle.dumps(info)) and "Order form" in repr(info)
    name.identification_method = korvane.Method.AUTOMATION_ID

    # No unit is changed on its way to the control and back.
    for text in ("Ren\u00e9e", "\U0001f9ed", "low \udc00 high \ud800 end", "x" * 70000):
        korvane.paste_to_target_direct(name, form, text)
        assert korvane.get_target_text(name, form) == text
        assert korvane.target_contains_text(name, form, text)
    assert not korvane.target_contains_text(name, form, "other")
    korvane.paste_to_target_direct(name, form, "")
    assert korvane.get_target_text(name, form) is None

    fails(korvane.Code.INVALID_ARGUMENT, korvane.set_clipboard_text, None)
    fails(korvane.Code.INVALID_ARGUMENT, korvane.click_target, name, None)
    fails(korvane.Code.NOT_FOUND, korvane.is_target_empty, name, form)
    fails(korvane.Code.FAILED, korvane.wait_for_target_contains_text, name, form, "never", 20)
    for refused in (("a\0b", "html"), ("\0", "html"), ("text", "a\0b"), ("text", "\ud800")):
        try:
            korvane.set_clipboard_text_and_html(*refused)
        except ValueError:
            continue
        raise AssertionError(f"{refused!a} was taken")
    # A text is no window, and bytes are no record.
    for wrong in ((name, "Order form"), (bytes(name), form)):
        try:
            korvane.click_target(*wrong)
        except TypeError:
            continue
        raise AssertionError(f"{wrong!r:.60} was taken")
    with korvane.CancelMonitor():
        assert korvane.is_cancelled() is False
    stage.close_form()
