@echo off
rem Takes back what register.cmd did; this folder may be deleted afterwards. Needs the rights of an
rem administrator. Refuses when another copy of the plug-in is the registered one.
setlocal DisableDelayedExpansion
rem A file that is made here and seen there tells that both are the same folder, however it is spelled.
set mark=unregister-%random%%random%.tmp
type nul >"%~dp0%mark%" 2>nul
if not exist "%~dp0%mark%" (
  echo Glazel DX could not be unregistered: this folder cannot be written to. Run this as administrator. 1>&2
  exit /b 1
)
rem What reg.exe prints keeps all letters in this code page only. Where the system does not have it,
rem some come as others; so they do in this folder's name when reg.exe prints it as well.
for /f "tokens=2 delims=:." %%p in ('chcp') do set page=%%p
chcp 65001 >nul 2>nul
set reg=%SystemRoot%\System32\reg.exe
%reg% add HKCU\Software\%mark% /ve /d "%~dp0GlazelDX_x64.dll" /f >nul
call :read own HKCU\Software\%mark%
%reg% delete HKCU\Software\%mark% /f >nul
set other=
for %%c in ({B47A199B-15E2-4836-BD39-419904B5D292} {EE3AFD2C-FB57-41ac-ABDE-90421C4140C3}) do call :compare %%c
chcp %page% >nul 2>nul
del "%~dp0%mark%"
if defined other (
  echo Glazel DX could not be unregistered: the registered copy is "%other%". Run unregister.cmd there, or register.cmd here first. 1>&2
  exit /b 1
)
"%SystemRoot%\System32\regsvr32.exe" /s /u "%~dp0GlazelDX_x64.dll"
if errorlevel 1 (
  echo Glazel DX could not be unregistered: regsvr32 failed with code %errorlevel%. Run this as administrator. 1>&2
  exit /b 1
)
echo Glazel DX is no longer registered.
exit /b 0

rem Sets other to what serves the class if that is not in this folder.
:compare
call :read found HKLM\Software\Classes\CLSID\%1\InprocServer32
if not defined found exit /b 0
if /i "%found%"=="%own%" exit /b 0
if exist "%found:GlazelDX_x64.dll=%%mark%" exit /b 0
set "other=%found%"
exit /b 0

rem Sets a variable to the default value of a key; to nothing when there is none.
:read
set %1=
for /f "delims=" %%l in ('%reg% query %2 /ve 2^>nul') do call :take %1 "%%l"
exit /b 0

rem Sets a variable to the data in a line, which begins with a name in the system's language.
:take
set "line=%~2"
set "data=%line:*REG_SZ    =%"
if not "%data%"=="%line%" set "%1=%data%"
exit /b 0
