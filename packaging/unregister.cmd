@echo off
rem Takes back what register.cmd did; this folder may be deleted afterwards. Needs the rights of an
rem administrator.
"%SystemRoot%\System32\regsvr32.exe" /s /u "%~dp0GlazelDX_x64.dll"
if errorlevel 1 goto failed
echo Glazel DX is no longer registered.
exit /b 0
:failed
echo Glazel DX could not be unregistered. Run this as administrator. 1>&2
exit /b 1
