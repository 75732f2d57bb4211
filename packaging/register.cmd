@echo off
rem Registers the plug-in where it stands, for all users of this computer. Needs the rights of an
rem administrator. The folder must stay where it is; run unregister.cmd before moving or deleting it.
"%SystemRoot%\System32\regsvr32.exe" /s "%~dp0GlazelDX_x64.dll"
if errorlevel 1 goto failed
echo Glazel DX is registered in "%~dp0".
exit /b 0
:failed
echo Glazel DX could not be registered. Run this as administrator. 1>&2
exit /b 1
