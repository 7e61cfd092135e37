"""Captures four elements of the order form, opens the form elsewhere and fills it in by the records."""

import korvane
import stage


def main():
    with korvane.Session("korvane.log") as session:
        first = session.window_of(stage.open_form(40, 40))
        stored = [
            bytes(first.target_at(*stage.centre_of(control)).record)  # as it would go into a file
            for control in (stage.NAME, stage.ARTICLE, stage.SUBMIT, stage.STATUS)
        ]

        # Anywhere else, at any later time.
        stage.open_form(420, 300)
        form = session.window(title="Order form", class_name="OrderForm")
        name, article, submit, status = (form.target(korvane.TargetRecord(record)) for record in stored)
        name.paste("Renée García")
        article.paste("Brass compass")
        submit.click()
        status.wait("Submitted")
        print(status.text())
        stage.close_form()


if __name__ == "__main__":
    main()
