@echo off
rem Records the steps of filling in an order form, opens the form elsewhere, does the steps there, and opens the report.
rem
rem   demo.cmd              everything
rem   demo.cmd --no-report  leaves the report closed
rem
rem Keep your hands off mouse and keyboard meanwhile. Leaves recording, log and report in the folder demo.
setlocal
cd /d "%~dp0"
if not exist demo mkdir demo
set form=examples\stage\order_form.exe
set failed=1

echo An order form opens at 40,40. korvane.exe records eleven steps in it.
start "" %form% --at 40,40
bin\korvane.exe record demo\order.json --force --script examples\session\order.steps.json
if errorlevel 1 goto end
taskkill /f /im order_form.exe >nul 2>&1

echo.
echo The form was closed. It opens again at 560,380, and the steps are done there.
start "" %form% --at 560,380
bin\korvane.exe check demo\order.json --timeout 10000
if errorlevel 1 goto end
bin\korvane.exe replay demo\order.json --set "NAME=Ada Moss" --set "ARTICLE=Brass compass" --log demo\korvane.log --report demo\report.html
if errorlevel 1 goto end
set failed=0
echo.
echo The report is demo\report.html.
if not "%~1"=="--no-report" start "" demo\report.html

:end
taskkill /f /im order_form.exe >nul 2>&1
exit /b %failed%
