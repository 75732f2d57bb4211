@echo off
rem Registers the plug-in where it stands, for all users of this computer. Needs the rights of an
rem administrator. The folder must stay where it is; run unregister.cmd before moving or deleting it.
setlocal DisableDelayedExpansion
if not exist "%~dp0GlazelDX_x64.dll" (
  echo Glazel DX could not be registered: GlazelDX_x64.dll is not beside this file. Unpack the whole archive. 1>&2
  exit /b 1
)
"%SystemRoot%\System32\regsvr32.exe" /s "%~dp0GlazelDX_x64.dll"
set code=%errorlevel%
if %code%==0 (
  echo Glazel DX is registered in "%~dp0".
  exit /b 0
)
set why=regsvr32 failed with code %code%
if %code%==3 set why=the system cannot load GlazelDX_x64.dll, which is damaged, blocked or not for this Windows. Unpack the archive again
if %code%==5 call :ask
echo Glazel DX could not be registered: %why%. 1>&2
exit /b 1

rem Why the entries could not be written: whoever may write them may write a value beside them.
:ask
set why=it needs the rights of an administrator. Run this as administrator
set value=HKLM\Software\Classes\CLSID /v BrellinGlazel_x64 /f
"%SystemRoot%\System32\reg.exe" add %value% >nul 2>nul
if errorlevel 1 exit /b 0
"%SystemRoot%\System32\reg.exe" delete %value% >nul
set why=the registry entries could not be written. A security program may forbid it
exit /b 0
