; The installer: plug-in, and optionally reference renderer, host program and sample looks, for all
; users. package.py gives VERSION, TARGET (the file to write), FILES (the lists of files, as macros),
; PLUGIN_SOURCE and HERE.
;
; Command line: /S asks nothing and shows nothing; /D=FOLDER, last and without quotes, chooses the
; folder; /NORENDERER, /NOHOST, /NOLOOKS leave parts out; /LOG=FILE chooses the log file.
; The exit codes are in docs/troubleshooting.md.
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
SetDateSave off ; the same files give the same bytes
SetOverwrite try ; a file that cannot be written is told of by InstallFile
AllowSkipFiles off
RequestExecutionLevel admin
ManifestSupportedOS all
ManifestDPIAware true

!include "MUI2.nsh"
!include "LogicLib.nsh"
!include "FileFunc.nsh"
!include "WordFunc.nsh"
!include "StrFunc.nsh"
!include "${FILES}"

!define PRODUCT "Glazel DX"
!define PUBLISHER "Brellin"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\GlazelDX"
!define CLASSES "Software\Classes"
!define EFFECT_CLASS "CLSID\{B47A199B-15E2-4836-BD39-419904B5D292}"
!define PAGE_CLASS "CLSID\{EE3AFD2C-FB57-41ac-ABDE-90421C4140C3}"
!define TYPE_LIBRARY_ID "{CF41FD25-F1F3-4B65-A240-3D4E880D868D}"
!define TYPE_LIBRARY "TypeLib\${TYPE_LIBRARY_ID}\1.0"

!define CODE_IN_USE 3
!define CODE_DOWNGRADE 4
!define CODE_REGISTRATION 5
!define CODE_FILES 6
!define CODE_RIGHTS 7
!define CODE_RUNNING 8
!define CODE_OLD_VERSION 9

!define STAGE_CHECKS 0
!define STAGE_FILES 1        ; $Written_* say which
!define STAGE_REGISTRATION 2 ; and the uninstaller is written
!define STAGE_ENTRY 3        ; of the list of installed programs

Name "${PRODUCT}"
OutFile "${TARGET}"
InstallDir "$PROGRAMFILES64\${PUBLISHER}\${PRODUCT}"
InstallDirRegKey HKLM "${UNINSTALL_KEY}" "InstallLocation"
BrandingText "${PRODUCT} ${VERSION}"
VIProductVersion "${VERSION}.0"
VIFileVersion "${VERSION}.0"
VIAddVersionKey /LANG=1033 "CompanyName" "${PUBLISHER}"
VIAddVersionKey /LANG=1033 "FileDescription" "${PRODUCT} Setup"
VIAddVersionKey /LANG=1033 "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=1033 "LegalCopyright" "MIT licence"
VIAddVersionKey /LANG=1033 "ProductName" "${PRODUCT}"
VIAddVersionKey /LANG=1033 "ProductVersion" "${VERSION}"

${StrStr} ; defines the function

Var LogFile
Var LogOption      ; the option that chose it; empty without one
Var Mutex          ; of RefuseSecondInstance; the system closes it at the latest
Var OldFolder      ; where a version is installed now; empty without one
Var ExistingFolder ; the deepest folder on the way to $INSTDIR that is not ours to remove
Var Stage          ; how far this run is, one of STAGE_*: what there is to take back when it fails
Var Problem        ; exit code of a removal that went on after something failed; 0 without

!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_LICENSE "${HERE}/../LICENSE"
!insertmacro MUI_PAGE_COMPONENTS
Page custom ShowRendererPage
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

; --- what installer and uninstaller share; UN is "" or "un."

!macro Log text
  Push "${text}"
  !ifdef __UNINSTALL__
    Call un.WriteLog
  !else
    Call WriteLog
  !endif
!macroend

; Ends the program with an exit code, after telling why: in the log, and to a user who is there.
!macro Fail code text
  Push ${code}
  Push "${text}"
  !ifdef __UNINSTALL__
    Call un.Fail
  !else
    Call Fail
  !endif
!macroend

; A file that somebody runs, or a DLL that somebody has loaded, cannot be opened for writing. Whatever
; else keeps it from being opened is told of by whoever writes or deletes it.
!macro RefuseWhenInUse file
  StrCpy $0 "${file}"
  System::Call 'kernel32::CreateFileW(w r0, i 0x40000000, i 7, p 0, i 3, i 0, p 0) p .r1 ?e' ; to write
  Pop $0
  ${If} $1 != "-1" ; INVALID_HANDLE_VALUE
    System::Call 'kernel32::CloseHandle(p r1)'
  ${ElseIf} $0 = 32 ; ERROR_SHARING_VIOLATION
    !insertmacro Fail ${CODE_IN_USE} "${file} is in use. Close the video editor and every other program that uses it, then try again."
  ${EndIf}
!macroend

!macro RefuseWhenAnyInUse
  !insertmacro RefuseWhenInUse "$INSTDIR\GlazelDX_x64.dll"
  !insertmacro RefuseWhenInUse "$INSTDIR\GZ3Renderer_x64.dll"
  !insertmacro RefuseWhenInUse "$INSTDIR\glazelhost.exe"
!macroend

; Leaves the function when the entry is there and leads to another copy of the plug-in, with the path
; of that in $0.
!macro ReturnOtherCopy key
  ReadRegStr $0 HKLM "${CLASSES}\${key}" ""
  ${If} $0 != ""
  ${AndIf} $0 != "$INSTDIR\GlazelDX_x64.dll"
    Return
  ${EndIf}
!macroend

!macro SharedFunctions UN
  Function ${UN}WriteLog
    Exch $R9
    Push $R8
    DetailPrint "$R9"
    ClearErrors
    FileOpen $R8 "$LogFile" a
    ${IfNot} ${Errors}
      FileSeek $R8 0 END
      FileWriteUTF16LE /BOM $R8 "$R9$\r$\n"
      FileClose $R8
    ${EndIf}
    ClearErrors
    Pop $R8
    Pop $R9
  FunctionEnd

  Function ${UN}OpenLog
    SetRegView 64
    SetShellVarContext all
    StrCpy $LogFile "$TEMP\GlazelDX-setup.log"
    StrCpy $LogOption ""
    StrCpy $R1 "" ; the chosen file if it cannot be used
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/LOG=" $1
    ${IfNot} ${Errors}
      FileOpen $0 "$1" a
      ${If} ${Errors}
        StrCpy $R1 "'$1'"
      ${Else}
        FileClose $0
        StrCpy $LogFile $1
        StrCpy $LogOption '/LOG="$1"'
      ${EndIf}
    ${EndIf}
    ${GetTime} "" "L" $0 $1 $2 $3 $4 $5 $6
    !insertmacro Log "$2-$1-$0 $4:$5:$6 ${PRODUCT} ${VERSION}"
    ${If} $R1 != ""
      !insertmacro Fail ${CODE_FILES} "The log file $R1 cannot be opened."
    ${EndIf}
  FunctionEnd

  Function ${UN}RefuseWithoutRights
    UserInfo::GetAccountType
    Pop $0
    ${If} $0 != "Admin"
      !insertmacro Fail ${CODE_RIGHTS} "This needs the rights of an administrator."
    ${EndIf}
  FunctionEnd

  ; Setup programs and uninstallers that run at once would undo each other's work.
  Function ${UN}RefuseSecondInstance
    System::Call 'kernel32::CreateMutexW(p 0, i 0, w "Global\GlazelDX-setup") p .r1 ?e'
    Pop $0
    StrCpy $Mutex $1
    ${If} $0 = 183 ; ERROR_ALREADY_EXISTS
    ${OrIf} $0 = 5 ; ERROR_ACCESS_DENIED: one of another account
      !insertmacro Fail ${CODE_RUNNING} "Another setup or removal of ${PRODUCT} is running."
    ${EndIf}
  FunctionEnd

  ; $0: a folder. Removes it and the folders above it that are empty, up to $ExistingFolder.
  Function ${UN}RemoveEmptyFolders
    SetOutPath "$TEMP" ; the current folder cannot be removed
    ${DoWhile} "$0" != ""
      ${If} "$0" == "$ExistingFolder"
        ${Break}
      ${EndIf}
      ClearErrors
      RMDir "$0"
      ${If} ${FileExists} "$0\*.*"
      ${OrIf} "$ExistingFolder" == "" ; nobody knows any more what is ours above this one
        ${Break}
      ${EndIf}
      ${GetParent} "$0" $0
    ${Loop}
    ClearErrors
  FunctionEnd

  ; Runs regsvr32 with the switches in $1 on the plug-in in $INSTDIR. $0: its exit code.
  Function ${UN}RunRegsvr32
    ClearErrors
    ExecWait '"$SYSDIR\regsvr32.exe" $1 "$INSTDIR\GlazelDX_x64.dll"' $0
    ${If} ${Errors}
      StrCpy $0 "not started"
    ${EndIf}
    !insertmacro Log "regsvr32 $1: $0"
  FunctionEnd

  ; $0: a copy of the plug-in outside $INSTDIR that is registered; empty without one. An entry that is
  ; missing says nothing: somebody may have taken out a part.
  Function ${UN}FindOtherCopy
    !insertmacro ReturnOtherCopy "${EFFECT_CLASS}\InprocServer32"
    !insertmacro ReturnOtherCopy "${PAGE_CLASS}\InprocServer32"
    !insertmacro ReturnOtherCopy "${TYPE_LIBRARY}\409\win64"
    StrCpy $0 ""
  FunctionEnd
!macroend

!insertmacro SharedFunctions ""
!insertmacro SharedFunctions "un."

; --- installer

; `written` is the variable that says so.
!macro InstallFile source name written
  ClearErrors
  File "/oname=${name}" "${source}"
  ${If} ${Errors}
    !insertmacro Fail ${CODE_FILES} "$OUTDIR\${name} cannot be written. Check the rights to the folder and the space on the disk."
  ${EndIf}
  StrCpy ${written} "yes"
!macroend

!macro RemoveFile name
  ClearErrors
  Delete "$INSTDIR\${name}"
  ${If} ${Errors}
    StrCpy $Problem ${CODE_FILES}
    !insertmacro Log "$INSTDIR\${name} cannot be deleted"
  ${EndIf}
!macroend

!macro RemoveWrittenFile name written
  ${If} ${written} == "yes"
    !insertmacro RemoveFile "${name}"
  ${EndIf}
!macroend

; Only what this run wrote: the folder may hold somebody's own copy, registered or not. A file that
; was written over an older one goes, too.
Function TakeBack
  StrCpy $2 $Written_GlazelDX_x64_dll ; "yes" when a registration would lead to a file that goes
  ${If} $Stage < ${STAGE_REGISTRATION}
    Call FindOtherCopy
    ${If} $0 != ""
      StrCpy $2 ""
      !insertmacro Log "the plug-in in '$0' stays registered"
    ${EndIf}
  ${EndIf}
  ${If} $2 == "yes"
    StrCpy $1 "/s /u"
    Call RunRegsvr32
  ${EndIf}
  !insertmacro RemoveWritten
  ${If} $Stage >= ${STAGE_REGISTRATION}
    Delete "$INSTDIR\uninstall.exe"
  ${EndIf}
  ${If} $Stage >= ${STAGE_ENTRY}
    DeleteRegKey HKLM "${UNINSTALL_KEY}"
  ${EndIf}
  StrCpy $0 "$INSTDIR"
  Call RemoveEmptyFolders
FunctionEnd

Function Fail
  Pop $R1
  Pop $R0
  !insertmacro Log "failed ($R0): $R1"
  ${If} $Stage >= ${STAGE_FILES}
    Call TakeBack
    !insertmacro Log "what was installed has been removed again"
  ${EndIf}
  MessageBox MB_OK|MB_ICONSTOP "$R1" /SD IDOK
  SetErrorLevel $R0
  Quit
FunctionEnd

Function RefuseDowngrade
  ReadRegStr $0 HKLM "${UNINSTALL_KEY}" "DisplayVersion"
  ${If} $0 == ""
    !insertmacro Log "first installation"
    Return
  ${EndIf}
  ${VersionCompare} "${VERSION}" "$0" $1
  ${If} $1 = 2
    !insertmacro Fail ${CODE_DOWNGRADE} "A newer version, $0, is installed. Uninstall it first to go back to ${VERSION}."
  ${ElseIf} $1 = 1
    !insertmacro Log "upgrade from $0"
  ${Else}
    !insertmacro Log "repair"
  ${EndIf}
FunctionEnd

; NSIS takes the default folder, silently, when it cannot use the one that /D= names.
Function RefuseUnusableFolder
  System::Call 'kernel32::GetCommandLineW() w .r0'
  ${StrStr} $1 "$0" " /D="
  ${If} $1 == ""
    Return
  ${EndIf}
  StrCpy $1 $1 "" 4
  ${If} "$1" != "$INSTDIR"
  ${AndIf} "$1" != "$INSTDIR\"
    !insertmacro Fail ${CODE_FILES} "The folder '$1' cannot be used."
  ${EndIf}
FunctionEnd

!macro LeaveOutOnDemand switch section
  ClearErrors
  ${GetOptions} $R0 "${switch}" $0
  ${IfNot} ${Errors}
    !insertmacro UnselectSection ${section}
  ${EndIf}
!macroend

; An installed version is removed by its own uninstaller, which knows its files, before this one
; comes in its place; so nothing of it stays, and parts can be left out the second time.
Section "-Begin"
  !insertmacro Log "folder $INSTDIR"
  !insertmacro RefuseWhenAnyInUse ; even when it is not an installation but somebody's own copy
  ReadRegStr $OldFolder HKLM "${UNINSTALL_KEY}" "InstallLocation"
  ReadRegStr $ExistingFolder HKLM "${UNINSTALL_KEY}" "ExistingFolder"
  ${If} $OldFolder != ""
  ${AndIf} ${FileExists} "$OldFolder\uninstall.exe"
    ClearErrors
    ExecWait '"$OldFolder\uninstall.exe" /S /SETUP $LogOption _?=$OldFolder' $0
    ${If} ${Errors}
      StrCpy $0 ${CODE_OLD_VERSION}
    ${EndIf}
    ${If} $0 = ${CODE_IN_USE}
      !insertmacro Fail ${CODE_IN_USE} "The installed version in $OldFolder is in use. Close the video editor and every other program that uses it, then try again."
    ${ElseIf} $0 <> 0
      !insertmacro Fail ${CODE_OLD_VERSION} "The installed version in $OldFolder could not be removed ($0)."
    ${EndIf}
    Delete "$OldFolder\uninstall.exe"
    StrCpy $0 "$OldFolder"
    Call RemoveEmptyFolders
  ${EndIf}

  ; The old version's folder may still hold files of the user: it was not there before, all the same.
  ${If} $OldFolder != $INSTDIR
  ${OrIf} $ExistingFolder == ""
    StrCpy $ExistingFolder "$INSTDIR"
    ${DoWhile} "$ExistingFolder" != ""
      ${If} ${FileExists} "$ExistingFolder\*.*"
        ${Break}
      ${EndIf}
      ${GetParent} "$ExistingFolder" $ExistingFolder
    ${Loop}
  ${EndIf}
  StrCpy $Stage ${STAGE_FILES}
  ClearErrors
  CreateDirectory "$INSTDIR"
  ${If} ${Errors}
    !insertmacro Fail ${CODE_FILES} "The folder $INSTDIR cannot be created."
  ${EndIf}
SectionEnd

Section "Plug-in" SecPlugin
  SectionIn RO
  !insertmacro Install_plugin
SectionEnd

Section "Reference renderer" SecRenderer
  !insertmacro Install_renderer
SectionEnd

Section "Host program" SecHost
  !insertmacro Install_host
SectionEnd

Section "Sample looks" SecLooks
  !insertmacro Install_looks
SectionEnd

Section "-End"
  SetOutPath "$INSTDIR"
  ClearErrors
  WriteUninstaller "$INSTDIR\uninstall.exe"
  ${If} ${Errors}
    !insertmacro Fail ${CODE_FILES} "$INSTDIR\uninstall.exe cannot be written."
  ${EndIf}
  StrCpy $Stage ${STAGE_REGISTRATION}
  StrCpy $1 "/s"
  Call RunRegsvr32
  ${If} $0 != "0"
    !insertmacro Fail ${CODE_REGISTRATION} "The plug-in could not be registered ($0)."
  ${EndIf}

  ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
  StrCpy $Stage ${STAGE_ENTRY}
  ClearErrors
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "${PRODUCT}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "${PUBLISHER}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\uninstall.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "ExistingFolder" "$ExistingFolder"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "EstimatedSize" $0
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
  ${If} ${Errors}
    !insertmacro Fail ${CODE_FILES} "The entry in the list of installed programs cannot be written."
  ${EndIf}
  !insertmacro Log "installed"
SectionEnd

Function .onInit
  StrCpy $Stage ${STAGE_CHECKS}
  Call OpenLog
  Call RefuseWithoutRights
  Call RefuseSecondInstance
  Call RefuseDowngrade
  Call RefuseUnusableFolder
  ${GetParameters} $R0
  !insertmacro LeaveOutOnDemand "/NORENDERER" ${SecRenderer}
  !insertmacro LeaveOutOnDemand "/NOHOST" ${SecHost}
  !insertmacro LeaveOutOnDemand "/NOLOOKS" ${SecLooks}
FunctionEnd

Function ShowRendererPage
  !insertmacro MUI_HEADER_TEXT "The renderer" "Where the effect looks for GZ3Renderer_x64.dll"
  nsDialogs::Create 1018
  Pop $0
  ${NSD_CreateLabel} 0 0 100% 100% "The effect loads the renderer, GZ3Renderer_x64.dll, by its plain name. It is found in the first of these places:$\r$\n$\r$\n    the folder of the program that uses the effect, such as the video editor$\r$\n    the system's folders$\r$\n    the current folder of that program$\r$\n    the folders of the PATH variable$\r$\n$\r$\nIt is not looked for in the folder of the plug-in. The reference renderer that comes along serves the host program, which stands beside it. For a video editor put a renderer into the editor's folder, or add the renderer's folder to PATH.$\r$\n$\r$\ntroubleshooting.md tells more."
  Pop $0
  nsDialogs::Show
FunctionEnd

LangString ABOUT_PLUGIN 1033 "The effect and its property page, registered for all users."
LangString ABOUT_RENDERER 1033 "A small renderer for .cube, CDL and .look files, for the host program."
LangString ABOUT_HOST 1033 "glazelhost renders pictures and video through the effect, without an editor."
LangString ABOUT_LOOKS 1033 "Three looks to try."
!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
  !insertmacro MUI_DESCRIPTION_TEXT ${SecPlugin} $(ABOUT_PLUGIN)
  !insertmacro MUI_DESCRIPTION_TEXT ${SecRenderer} $(ABOUT_RENDERER)
  !insertmacro MUI_DESCRIPTION_TEXT ${SecHost} $(ABOUT_HOST)
  !insertmacro MUI_DESCRIPTION_TEXT ${SecLooks} $(ABOUT_LOOKS)
!insertmacro MUI_FUNCTION_DESCRIPTION_END

; --- uninstaller

Function un.Fail
  Pop $R1
  Pop $R0
  !insertmacro Log "failed ($R0): $R1"
  MessageBox MB_OK|MB_ICONSTOP "$R1" /SD IDOK
  SetErrorLevel $R0
  Quit
FunctionEnd

Function un.onInit
  Call un.OpenLog
  !insertmacro Log "uninstall from $INSTDIR"
  Call un.RefuseWithoutRights
  ${GetParameters} $R0
  ClearErrors
  ${GetOptions} $R0 "/SETUP" $0 ; the setup program that runs this one holds the mutex
  ${If} ${Errors}
    Call un.RefuseSecondInstance
  ${EndIf}
FunctionEnd

!macro NoteEntry key
  ClearErrors
  EnumRegKey $R1 HKLM "${CLASSES}\${key}" 0
  ${IfNot} ${Errors} ; the key is there, whatever is below it
    StrCpy $R0 "$R0 ${key}"
  ${EndIf}
!macroend

; Another program may have registered the same interface for its own type library.
!macro NoteInterface key
  ReadRegStr $R1 HKLM "${CLASSES}\${key}\TypeLib" ""
  ${If} $R1 == "${TYPE_LIBRARY_ID}"
    StrCpy $R0 "$R0 ${key}"
  ${EndIf}
!macroend

; $R0: the keys of the plug-in that are left, each after a space; empty without one.
Function un.FindEntries
  StrCpy $R0 ""
  !insertmacro NoteEntry "${EFFECT_CLASS}"
  !insertmacro NoteEntry "${PAGE_CLASS}"
  !insertmacro NoteEntry "BrellinGlazel_x64.Plugin"
  !insertmacro NoteEntry "BrellinGlazel_x64.Plugin.1"
  !insertmacro NoteEntry "BrellinGlazel_x64.PluginPP"
  !insertmacro NoteEntry "BrellinGlazel_x64.PluginPP.1"
  !insertmacro NoteEntry "${TYPE_LIBRARY}"
  !insertmacro NoteInterface "Interface\{E31FB81B-1335-11D1-8189-0000F87557DB}"
  !insertmacro NoteInterface "Interface\{A947DD96-CD97-4958-B026-BFE1CB8646EE}"
  ClearErrors
FunctionEnd

; Takes the classes out of the registry unless another copy is registered.
Function un.Unregister
  Call un.FindOtherCopy
  ${If} $0 != ""
    !insertmacro Log "not registered from here but from '$0': left alone"
    Return
  ${EndIf}
  StrCpy $1 "/s /u"
  Call un.RunRegsvr32
  Call un.FindEntries
  ${If} $0 == "0"
  ${AndIf} $R0 == ""
    Return
  ${EndIf}
  ; The plug-in was deleted or damaged, or a part of its entries taken out: without the entry of the
  ; type library the system does not find its interfaces. A good copy removes what it has written.
  !insertmacro Log "again with a fresh copy of the plug-in"
  SetOutPath "$INSTDIR"
  File "${PLUGIN_SOURCE}"
  StrCpy $1 "/s"
  Call un.RunRegsvr32
  StrCpy $1 "/s /u"
  Call un.RunRegsvr32
  Call un.FindEntries
  ${If} $R0 != ""
    StrCpy $Problem ${CODE_REGISTRATION}
    !insertmacro Log "still registered:$R0"
  ${EndIf}
FunctionEnd

; Takes this version out of the list of installed programs, unless somebody has already done so.
Function un.RemoveEntry
  ClearErrors
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
  ${IfNot} ${Errors}
    Return
  ${EndIf}
  ; HKEY_LOCAL_MACHINE, with its sign as 64-bit programs need it, and KEY_QUERY_VALUE
  System::Call 'advapi32::RegOpenKeyExW(p -2147483646, w "${UNINSTALL_KEY}", i 0, i 1, *p .r1) i .r0'
  ${If} $0 <> 2 ; ERROR_FILE_NOT_FOUND
    StrCpy $Problem ${CODE_FILES}
    !insertmacro Log "the entry in the list of installed programs cannot be removed"
  ${EndIf}
FunctionEnd

Section "Uninstall"
  StrCpy $Problem 0
  !insertmacro RefuseWhenAnyInUse
  Call un.Unregister
  !insertmacro RemoveAll
  ReadRegStr $ExistingFolder HKLM "${UNINSTALL_KEY}" "ExistingFolder"
  ${If} $Problem = 0 ; else it can be run again
    Call un.RemoveEntry
  ${EndIf}
  ${If} $Problem = 0
    Delete "$INSTDIR\uninstall.exe"
  ${EndIf}
  StrCpy $0 "$INSTDIR"
  Call un.RemoveEmptyFolders
  ${If} $Problem <> 0
    !insertmacro Fail $Problem "Not everything could be removed. The log, $LogFile, says what is left."
  ${EndIf}
  ; Nobody who sees the last line of the log and starts a setup program is refused.
  System::Call 'kernel32::CloseHandle(p $Mutex)'
  !insertmacro Log "uninstalled"
SectionEnd
