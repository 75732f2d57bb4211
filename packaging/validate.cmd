@echo off
rem Judges the plug-in and the renderer beside this file; the reports lie beside it afterwards.
setlocal DisableDelayedExpansion
set failed=0
if not exist "%~dp0glazelhost.exe" (
  echo Nothing could be judged: glazelhost.exe is not beside this file. Unpack the whole archive. 1>&2
  exit /b 1
)
call :judge GlazelDX_x64.dll validate-plugin.json
call :judge GZ3Renderer_x64.dll validate-renderer.json
if "%~1"=="" pause
exit /b %failed%

rem The worst exit code of both counts. A folder's name ends without its backslash.
:judge
"%~dp0glazelhost.exe" validate "%~dp0%1" --renderer "%~dp0." --level 10 --json "%~dp0%2" --overwrite
if %errorlevel% gtr %failed% set failed=%errorlevel%
exit /b 0
