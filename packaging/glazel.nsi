; The installer: plug-in, and optionally reference renderer, host program and sample looks, for all
; users. package.py gives VERSION, TARGET (the file to write), FILES (the lists of files, as macros),
; PLUGIN_SOURCE, OLDEST_WINDOWS and HERE. Command line and exit codes: docs/troubleshooting.md.
;
; A setup succeeds or leaves everything as it was. The new files are written to ~setup-new beside
; their targets; then every file that has to make place is tried; then those go to ~setup-old and the
; new ones to their places; then the plug-in is registered and the list of programs written. A
; journal in the registry says how far the setup is, so that whoever comes after it, Fail or the next
; setup, can take all of it back.
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
SetDateSave off ; the same files give the same bytes
SetOverwrite try ; a file that cannot be written is told of by StageFile
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
!define FILES_KEY "${UNINSTALL_KEY}\Files" ; a value for each file: its name, and its part as data
!define CLASSES "Software\Classes"
!define EFFECT_CLASS "CLSID\{B47A199B-15E2-4836-BD39-419904B5D292}"
!define PAGE_CLASS "CLSID\{EE3AFD2C-FB57-41ac-ABDE-90421C4140C3}"
!define TYPE_LIBRARY_ID "{CF41FD25-F1F3-4B65-A240-3D4E880D868D}"
!define TYPE_LIBRARY "TypeLib\${TYPE_LIBRARY_ID}\1.0"

; The deed is a macro that takes a key below CLASSES.
!macro EachClassKey deed
  !insertmacro ${deed} "${EFFECT_CLASS}"
  !insertmacro ${deed} "${PAGE_CLASS}"
  !insertmacro ${deed} "BrellinGlazel_x64.Plugin"
  !insertmacro ${deed} "BrellinGlazel_x64.Plugin.1"
  !insertmacro ${deed} "BrellinGlazel_x64.PluginPP"
  !insertmacro ${deed} "BrellinGlazel_x64.PluginPP.1"
!macroend
!macro EachInterfaceKey deed view
  !insertmacro ${deed} "${view}Interface\{E31FB81B-1335-11D1-8189-0000F87557DB}"
  !insertmacro ${deed} "${view}Interface\{A947DD96-CD97-4958-B026-BFE1CB8646EE}"
!macroend

!define CODE_IN_USE 3
!define CODE_DOWNGRADE 4
!define CODE_REGISTRATION 5
!define CODE_FILES 6
!define CODE_RIGHTS 7
!define CODE_RUNNING 8
!define CODE_WINDOWS 10

!define STAGE_CHECKS 0
!define STAGE_COPYING 1     ; to ~setup-new
!define STAGE_MOVING 2      ; what has to make place, to ~setup-old
!define STAGE_PLACING 3     ; from here on whatever stands in a new file's place is of this setup
!define STAGE_REGISTERING 4
!define STAGE_LISTING 5     ; in the list of installed programs

; In it: the values Folder, OldFolder, ExistingFolder and Stage, as the variables; the keys New and Old,
; as FILES_KEY, of what is installed and of what makes place; and Before, with copies of the keys
; that a setup changes. With no Stage there is nothing to take back.
!define JOURNAL "Software\${PUBLISHER}\${PRODUCT} setup"
!define HKEY_LOCAL_MACHINE -2147483646 ; with its sign, as 64-bit programs need it

Name "${PRODUCT}"
OutFile "${TARGET}"
InstallDir "$PROGRAMFILES64\${PUBLISHER}\${PRODUCT}"
InstallDirRegKey HKLM "${UNINSTALL_KEY}" "InstallLocation"
AllowRootDirInstall true ; of a drive that stands for the folder of an installation
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
Var Mutex          ; of RefuseSecondInstance; the system closes it at the latest
Var OldFolder      ; where a version is installed now; empty without one
Var ExistingFolder ; the deepest folder on the way to $INSTDIR that is not ours to remove
Var OldExisting    ; the same of $OldFolder
Var Stage          ; how far this setup is, one of STAGE_*
Var Problem        ; exit code of something that went on after a part of it failed; 0 without
Var List           ; for EachFile: New or Old,
Var Base           ; the folder of its files,
Var Name           ; a file, below that folder,
Var Index          ; its number in the list,
Var Deed           ; and the function that is called with each

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
    StrCpy $R1 "" ; the chosen file if it cannot be used
    UserInfo::GetAccountType
    Pop $0
    ${If} $0 == "Admin"
      ; Where nobody else writes, nobody can have put a link that leads to another file.
      StrCpy $LogFile "$WINDIR\Logs\GlazelDX-setup.log"
      CreateDirectory "$WINDIR\Logs"
    ${Else}
      StrCpy $LogFile "$TEMP\GlazelDX-setup.log" ; it will say that rights are missing, no more
    ${EndIf}
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
    ${OrIf} $Mutex P= 0 ; denied: it is one of another account
      !insertmacro Fail ${CODE_RUNNING} "Another setup or removal of ${PRODUCT} is running."
    ${EndIf}
  FunctionEnd

  ; $0: a folder. Removes it and the folders above it that are empty, up to $ExistingFolder.
  Function ${UN}RemoveEmptyFolders
    SetOutPath "$WINDIR" ; the current folder cannot be removed
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

  ; $0: a file or folder. $R0: which one it is, however its path is spelled; empty when it cannot be
  ; opened.
  Function ${UN}GetIdentity
    StrCpy $R0 ""
    ; no rights, sharing all, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS for folders
    System::Call 'kernel32::CreateFileW(w r0, i 0, i 7, p 0, i 3, i 0x2000000, p 0) p .r1'
    ${If} $1 P= -1 ; INVALID_HANDLE_VALUE
      Return
    ${EndIf}
    System::Alloc 52 ; BY_HANDLE_FILE_INFORMATION
    Pop $2
    System::Call 'kernel32::GetFileInformationByHandle(p r1, p r2) i .r3'
    ${If} $3 <> 0
      ; the volume's serial number, and the file's index there
      System::Call '*$2(i, i, i, i, i, i, i, i .r3, i, i, i, i .r4, i .r5)'
      StrCpy $R0 "$3 $4 $5"
    ${EndIf}
    System::Free $2
    System::Call 'kernel32::CloseHandle(p r1)'
  FunctionEnd

  ; Moves $INSTDIR to the path in $R1 if that is the same folder in another spelling, as it is when
  ; one of them goes by a drive that stands for a folder.
  Function ${UN}SpellFolderAs
    StrCpy $0 $INSTDIR
    Call ${UN}GetIdentity
    StrCpy $R2 $R0
    StrCpy $0 $R1
    Call ${UN}GetIdentity
    ${If} $R0 != ""
    ${AndIf} $R0 == $R2
      StrCpy $INSTDIR $R1
    ${EndIf}
  FunctionEnd
!macroend

!insertmacro SharedFunctions ""
!insertmacro SharedFunctions "un."

; --- installer: the journal, and taking back

!macro EnterStage stage
  StrCpy $Stage ${stage}
  WriteRegStr HKLM "${JOURNAL}" "Stage" "$Stage"
!macroend

; Calls `deed` with $Name for each file of a list of the journal, in `base`.
!macro EachFile list base deed
  StrCpy $List "${list}"
  StrCpy $Base "${base}"
  GetFunctionAddress $Deed ${deed}
  Call EachFile
!macroend

Function EachFile
  StrCpy $Index 0
  ${Do}
    EnumRegValue $Name HKLM "${JOURNAL}\$List" $Index
    ${If} $Name == ""
      ${Break}
    ${EndIf}
    Call $Deed
    IntOp $Index $Index + 1
  ${Loop}
  ClearErrors
FunctionEnd

; Copies the key $R1 of HKEY_LOCAL_MACHINE with all below it into the key $R2; nothing when there is
; none. $0: the system's error code.
Function CopyKey
  System::Call 'advapi32::RegOpenKeyExW(p ${HKEY_LOCAL_MACHINE}, w R1, i 0, i 0x20019, *p .r1) i .r0' ; KEY_READ
  ${If} $0 = 2 ; ERROR_FILE_NOT_FOUND
    StrCpy $0 0
    Return
  ${ElseIf} $0 <> 0
    Return
  ${EndIf}
  System::Call 'advapi32::RegCreateKeyExW(p ${HKEY_LOCAL_MACHINE}, w R2, i 0, p 0, i 0, i 0x2001F, p 0, *p .r2, p 0) i .r0' ; and KEY_WRITE
  ${If} $0 = 0
    System::Call 'advapi32::RegCopyTreeW(p r1, p 0, p r2) i .r0'
    System::Call 'advapi32::RegCloseKey(p r2)'
  ${EndIf}
  System::Call 'advapi32::RegCloseKey(p r1)'
FunctionEnd

!macro SaveKey key
  StrCpy $R1 "${key}"
  StrCpy $R2 "${JOURNAL}\Before\${key}"
  Call CopyKey
  ${If} $0 <> 0
    !insertmacro Fail ${CODE_FILES} "The registry key ${key} cannot be copied ($0)."
  ${EndIf}
!macroend

!macro RestoreKey key
  DeleteRegKey HKLM "${key}"
  StrCpy $R1 "${JOURNAL}\Before\${key}"
  StrCpy $R2 "${key}"
  Call CopyKey
  ${If} $0 <> 0
    !insertmacro Log "the registry key ${key} cannot be put back ($0)"
  ${EndIf}
!macroend

!macro SaveClassKey key
  !insertmacro SaveKey "${CLASSES}\${key}"
!macroend
!macro RestoreClassKey key
  !insertmacro RestoreKey "${CLASSES}\${key}"
!macroend

; All that registration changes. The system keeps type libraries and interfaces for 32-bit programs,
; too, and the plug-in the interfaces that it takes from others.
!macro EachChangedClassKey deed
  !insertmacro EachClassKey ${deed}
  !insertmacro EachInterfaceKey ${deed} ""
  !insertmacro EachInterfaceKey ${deed} "Wow6432Node\"
  !insertmacro ${deed} "TypeLib\${TYPE_LIBRARY_ID}"
  !insertmacro ${deed} "Wow6432Node\TypeLib\${TYPE_LIBRARY_ID}"
  !insertmacro ${deed} "BrellinGlazel_x64.Replaced"
!macroend

Function PutBackFile
  ${If} ${FileExists} "$Base\~setup-old\$Name"
    ClearErrors
    Rename "$Base\~setup-old\$Name" "$Base\$Name"
    ${If} ${Errors}
      StrCpy $Problem ${CODE_FILES}
      !insertmacro Log "$Base\$Name cannot be put back, it is now $Base\~setup-old\$Name"
    ${EndIf}
  ${EndIf}
FunctionEnd

; Once only: later the file in its place may be the one that was put back.
Function RemoveNewFile
  ReadRegStr $0 HKLM "${JOURNAL}\$List" $Name
  ${If} $0 == "removed"
    Return
  ${EndIf}
  ClearErrors
  Delete "$Base\$Name"
  ${If} ${Errors}
    StrCpy $Problem ${CODE_FILES}
    !insertmacro Log "$Base\$Name cannot be deleted"
  ${Else}
    WriteRegStr HKLM "${JOURNAL}\$List" $Name "removed"
  ${EndIf}
FunctionEnd

; What lies beside a file, and its folder if that is one of ours and empty.
Function ClearAround
  Delete "$Base\~setup-new\$Name"
  Delete "$Base\~setup-old\$Name"
  ${GetParent} "$Base\~setup-new\$Name" $0
  RMDir "$0"
  ${GetParent} "$Base\~setup-old\$Name" $0
  RMDir "$0"
  ${GetParent} "$Base\$Name" $0
  ${If} $0 != $Base
    RMDir "$0"
  ${EndIf}
FunctionEnd

; The end of a setup, whether it has been taken back or not.
Function CloseJournal
  DeleteRegValue HKLM "${JOURNAL}" "Stage"
  SetOutPath "$WINDIR" ; the current folder cannot be removed
  !insertmacro EachFile "New" "$INSTDIR" ClearAround
  !insertmacro EachFile "Old" "$OldFolder" ClearAround
  RMDir "$INSTDIR\~setup-new"
  RMDir "$INSTDIR\~setup-old"
  ${If} $OldFolder != ""
    RMDir "$OldFolder\~setup-old"
  ${EndIf}
  DeleteRegKey HKLM "${JOURNAL}"
  DeleteRegKey /ifempty HKLM "Software\${PUBLISHER}"
FunctionEnd

; From $Stage, $INSTDIR, $OldFolder, $ExistingFolder and the lists in the journal.
Function TakeBack
  StrCpy $Problem 0
  ${If} $Stage >= ${STAGE_PLACING}
    !insertmacro EachFile "New" "$INSTDIR" RemoveNewFile
  ${EndIf}
  ${If} $Stage >= ${STAGE_MOVING}
    !insertmacro EachFile "New" "$INSTDIR" PutBackFile
    !insertmacro EachFile "Old" "$OldFolder" PutBackFile
  ${EndIf}
  ${If} $Stage >= ${STAGE_REGISTERING}
    !insertmacro EachChangedClassKey RestoreClassKey
  ${EndIf}
  ${If} $Stage >= ${STAGE_LISTING}
    !insertmacro RestoreKey "${UNINSTALL_KEY}"
  ${EndIf}
  StrCpy $Stage ${STAGE_CHECKS}
  ${If} $Problem <> 0
    !insertmacro Log "the next setup will try again to put back what was there"
    Return
  ${EndIf}
  Call CloseJournal
  StrCpy $0 "$INSTDIR"
  Call RemoveEmptyFolders
  !insertmacro Log "everything is as it was before"
FunctionEnd

Function Fail
  Pop $R8
  Pop $R9
  !insertmacro Log "failed ($R9): $R8"
  ${If} $Stage >= ${STAGE_COPYING}
    Call TakeBack
  ${EndIf}
  MessageBox MB_OK|MB_ICONSTOP "$R8" /SD IDOK
  SetErrorLevel $R9
  Quit
FunctionEnd

; A file that cannot be written to its end, as on a full disk, stops the setup program by itself.
Function .onInstFailed
  ${If} $Stage >= ${STAGE_COPYING}
    !insertmacro Fail ${CODE_FILES} "A file could not be written to $INSTDIR. Check the space on the disk."
  ${EndIf}
FunctionEnd

; Ends what a setup has begun that was ended before it could do so.
Function EndInterruptedSetup
  ReadRegStr $0 HKLM "${JOURNAL}" "Folder"
  ${If} $0 == ""
    Return
  ${EndIf}
  Push $INSTDIR
  StrCpy $INSTDIR $0
  !insertmacro Log "a setup in $INSTDIR was interrupted"
  ReadRegStr $OldFolder HKLM "${JOURNAL}" "OldFolder"
  ReadRegStr $ExistingFolder HKLM "${JOURNAL}" "ExistingFolder"
  ReadRegStr $Stage HKLM "${JOURNAL}" "Stage"
  ${If} $Stage == ""
    StrCpy $Stage ${STAGE_CHECKS}
    Call CloseJournal
  ${Else}
    Call TakeBack
    ${If} $Problem <> 0
      !insertmacro Fail $Problem "A setup in $INSTDIR was interrupted, and what was there before cannot be put back. The log, $LogFile, says why."
    ${EndIf}
  ${EndIf}
  Pop $INSTDIR
FunctionEnd

; --- installer: checks

; The registry says the same to programs of every kind; other ways lie to those for x64.
Function RefuseOtherWindows
  ReadRegStr $0 HKLM "SYSTEM\CurrentControlSet\Control\Session Manager\Environment" "PROCESSOR_ARCHITECTURE"
  ${If} $0 == "ARM64"
    !insertmacro Fail ${CODE_WINDOWS} "This is Windows for ARM64. ${PRODUCT} is for video editors on Windows for x64."
  ${EndIf}
  StrCpy $4 ${OLDEST_WINDOWS}
  System::Call 'kernel32::GetModuleHandleW(w "ntdll.dll") p .r0'
  System::Call 'kernel32::GetProcAddress(p r0, m "wine_get_version") p .r0'
  ${If} $0 P<> 0
    StrCpy $4 "6.1" ; as Wine calls itself unless told otherwise, although it has the functions of later ones
  ${EndIf}
  System::Alloc 276 ; RTL_OSVERSIONINFOW
  Pop $1
  System::Call '*$1(i 276)'
  System::Call 'ntdll::RtlGetVersion(p r1)'
  System::Call '*$1(i, i .r2, i .r3)'
  System::Free $1
  ${VersionCompare} "$2.$3" "$4" $0
  ${If} $0 = 2
    !insertmacro Fail ${CODE_WINDOWS} "This is Windows $2.$3. ${PRODUCT} needs Windows ${OLDEST_WINDOWS} or later."
  ${EndIf}
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

; Whether the file can be moved away. One that somebody runs, or a DLL that somebody has loaded, cannot
; be opened for writing.
Function CheckFile
  ${IfNot} ${FileExists} "$Base\$Name"
    Return
  ${EndIf}
  StrCpy $0 "$Base\$Name"
  ; to write and delete, sharing all, OPEN_EXISTING
  System::Call 'kernel32::CreateFileW(w r0, i 0x40010000, i 7, p 0, i 3, i 0, p 0) p .r1 ?e'
  Pop $2
  ${If} $2 = 5 ; ERROR_ACCESS_DENIED: because it is read-only?
    System::Call 'kernel32::CreateFileW(w r0, i 0x10000, i 7, p 0, i 3, i 0, p 0) p .r1 ?e'
    Pop $2
  ${EndIf}
  ${If} $1 P<> -1 ; INVALID_HANDLE_VALUE
    System::Call 'kernel32::CloseHandle(p r1)'
  ${ElseIf} $2 = 32 ; ERROR_SHARING_VIOLATION
    !insertmacro Fail ${CODE_IN_USE} "$Base\$Name is in use. Close the video editor and every other program that uses it, then try again."
  ${Else}
    !insertmacro Fail ${CODE_FILES} "$Base\$Name cannot be replaced ($2). Check the rights to it."
  ${EndIf}
FunctionEnd

; --- installer: steps

; In the current folder, which is ~setup-new or one below; `file` is its name there, `name` the one in
; the folder of the installation.
!macro StageFile source file name part
  !insertmacro NoteNewFile "${name}" "${part}"
  File "/oname=${file}" "${source}"
  !insertmacro CheckStaged "${name}"
!macroend

!macro NoteNewFile name part
  Delete "$INSTDIR\~setup-old\${name}" ; could be one that was in use when an earlier setup ended
  ClearErrors
  WriteRegStr HKLM "${JOURNAL}\New" "${name}" "${part}"
!macroend

!macro CheckStaged name
  ${If} ${Errors}
    !insertmacro Fail ${CODE_FILES} "$INSTDIR\${name} cannot be written. Check the rights to the folder and the space on the disk."
  ${EndIf}
!macroend

!macro NoteOldFile name part
  WriteRegStr HKLM "${JOURNAL}\Old" "${name}" "${part}"
!macroend

Function MoveAway
  ${IfNot} ${FileExists} "$Base\$Name"
    Return
  ${EndIf}
  ${GetParent} "$Base\~setup-old\$Name" $0
  CreateDirectory "$0"
  ClearErrors
  Rename "$Base\$Name" "$Base\~setup-old\$Name"
  ${If} ${Errors}
    !insertmacro Fail ${CODE_FILES} "$Base\$Name cannot be replaced. Check the rights to it and to its folder."
  ${EndIf}
FunctionEnd

Function Place
  ${GetParent} "$Base\$Name" $0
  CreateDirectory "$0"
  ClearErrors
  Rename "$Base\~setup-new\$Name" "$Base\$Name"
  ${If} ${Errors}
    !insertmacro Fail ${CODE_FILES} "$Base\$Name cannot be written. Check the rights to the folder."
  ${EndIf}
FunctionEnd

; $OldFolder, and whose the folders are.
Function FindFolders
  ReadRegStr $OldFolder HKLM "${UNINSTALL_KEY}" "InstallLocation"
  ReadRegStr $OldExisting HKLM "${UNINSTALL_KEY}" "ExistingFolder"
  StrCpy $R1 $OldFolder
  Call SpellFolderAs
  StrLen $0 $INSTDIR
  ${If} $0 <= 3
    !insertmacro Fail ${CODE_FILES} "The folder '$INSTDIR' cannot be used. Choose one below it."
  ${EndIf}
  ; The folder of an installation was not there before, all the same.
  StrCpy $ExistingFolder $OldExisting
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
FunctionEnd

; The files of the installation in $OldFolder. An entry without a list is an older setup program's,
; which knew no other files than this one.
Function NoteOldFiles
  EnumRegValue $0 HKLM "${FILES_KEY}" 0
  ClearErrors ; there may be none
  ${If} $0 == ""
    !insertmacro EachKnownFile NoteOldFile
    !insertmacro NoteOldFile "uninstall.exe" "plugin"
    Return
  ${EndIf}
  StrCpy $R1 "${FILES_KEY}"
  StrCpy $R2 "${JOURNAL}\Old"
  Call CopyKey
  ${If} $0 <> 0
    SetErrors
  ${EndIf}
FunctionEnd

Section "-Begin"
  Call FindFolders
  !insertmacro Log "folder $INSTDIR"
  ClearErrors
  WriteRegStr HKLM "${JOURNAL}" "Folder" $INSTDIR
  WriteRegStr HKLM "${JOURNAL}" "OldFolder" $OldFolder
  WriteRegStr HKLM "${JOURNAL}" "ExistingFolder" $ExistingFolder
  !insertmacro EnterStage ${STAGE_COPYING}
  ${If} $OldFolder != ""
    Call NoteOldFiles
  ${EndIf}
  ${If} ${Errors}
    !insertmacro Fail ${CODE_FILES} "The registry key ${JOURNAL} cannot be written."
  ${EndIf}
  CreateDirectory "$INSTDIR\~setup-new"
  ${If} ${Errors}
    !insertmacro Fail ${CODE_FILES} "The folder $INSTDIR cannot be created or written to."
  ${EndIf}
SectionEnd

Section "Plug-in" SecPlugin
  SectionIn RO
  !insertmacro Stage_plugin
SectionEnd

Section "Reference renderer" SecRenderer
  !insertmacro Stage_renderer
SectionEnd

Section "Host program" SecHost
  !insertmacro Stage_host
SectionEnd

Section "Sample looks" SecLooks
  !insertmacro Stage_looks
SectionEnd

Section "-End"
  !insertmacro NoteNewFile "uninstall.exe" "plugin"
  WriteUninstaller "$INSTDIR\~setup-new\uninstall.exe"
  !insertmacro CheckStaged "uninstall.exe"
  ${GetSize} "$INSTDIR\~setup-new" "/S=0K" $R6 $1 $2
  !insertmacro EachFile "New" "$INSTDIR" CheckFile
  !insertmacro EachFile "Old" "$OldFolder" CheckFile
  !insertmacro EachChangedClassKey SaveClassKey
  !insertmacro SaveKey "${UNINSTALL_KEY}"

  SetOutPath "$WINDIR"
  !insertmacro EnterStage ${STAGE_MOVING}
  !insertmacro EachFile "Old" "$OldFolder" MoveAway
  !insertmacro EachFile "New" "$INSTDIR" MoveAway
  !insertmacro EnterStage ${STAGE_PLACING}
  !insertmacro EachFile "New" "$INSTDIR" Place
  !insertmacro EnterStage ${STAGE_REGISTERING}
  StrCpy $1 "/s"
  Call RunRegsvr32
  ${If} $0 != "0"
    !insertmacro Fail ${CODE_REGISTRATION} "The plug-in could not be registered ($0)."
  ${EndIf}

  ClearErrors
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "${PRODUCT}"
  ${IfNot} ${Errors}
    !insertmacro EnterStage ${STAGE_LISTING}
  ${EndIf}
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "${PUBLISHER}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\uninstall.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "ExistingFolder" "$ExistingFolder"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "EstimatedSize" $R6
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
  ${IfNot} ${Errors}
    DeleteRegKey HKLM "${FILES_KEY}"
    ClearErrors ; there may be none
    StrCpy $R1 "${JOURNAL}\New"
    StrCpy $R2 "${FILES_KEY}"
    Call CopyKey
    ${If} $0 <> 0
      SetErrors
    ${EndIf}
  ${EndIf}
  ${If} ${Errors}
    !insertmacro Fail ${CODE_FILES} "The entry in the list of installed programs cannot be written."
  ${EndIf}

  Call CloseJournal
  ${If} $OldFolder != ""
  ${AndIf} $OldFolder != $INSTDIR
    StrCpy $ExistingFolder $OldExisting
    StrCpy $0 "$OldFolder"
    Call RemoveEmptyFolders
  ${EndIf}
  StrCpy $Stage ${STAGE_CHECKS}
  !insertmacro Log "installed"
SectionEnd

; The deed is a macro that takes the switch, the section and the name of a part.
!macro EachOptionalPart deed
  !insertmacro ${deed} "/NORENDERER" ${SecRenderer} "renderer"
  !insertmacro ${deed} "/NOHOST" ${SecHost} "host"
  !insertmacro ${deed} "/NOLOOKS" ${SecLooks} "looks"
!macroend

!macro LeaveOutOnDemand switch section part
  ClearErrors
  ${GetOptions} $R0 "${switch}" $0
  ${IfNot} ${Errors}
    !insertmacro UnselectSection ${section}
    StrCpy $R1 "chosen"
  ${EndIf}
!macroend

!macro LeaveOutAsBefore switch section part
  StrCpy $R1 "${part}"
  Call FindInstalledPart
  ${If} $0 == ""
    !insertmacro UnselectSection ${section}
  ${EndIf}
!macroend

; $0: a file of the part in $R1 that is installed; empty without one.
Function FindInstalledPart
  StrCpy $Index 0
  ${Do}
    EnumRegValue $0 HKLM "${FILES_KEY}" $Index
    ReadRegStr $1 HKLM "${FILES_KEY}" $0
    ${If} $0 == ""
    ${OrIf} $1 == $R1
      ${Break}
    ${EndIf}
    IntOp $Index $Index + 1
  ${Loop}
FunctionEnd

; As the command line says; when it says nothing of parts, as it was; the first time, all of them.
Function ChooseParts
  ${GetParameters} $R0
  StrCpy $R1 ""
  !insertmacro EachOptionalPart LeaveOutOnDemand
  ClearErrors
  ${GetOptions} $R0 "/ALL" $0
  ${IfNot} ${Errors}
  ${OrIf} $R1 != ""
    Return
  ${EndIf}
  StrCpy $R1 "plugin"
  Call FindInstalledPart
  ${If} $0 != ""
    !insertmacro EachOptionalPart LeaveOutAsBefore
  ${EndIf}
FunctionEnd

Function .onInit
  StrCpy $Stage ${STAGE_CHECKS}
  Call OpenLog
  Call RefuseWithoutRights
  Call RefuseOtherWindows
  Call RefuseSecondInstance
  Call EndInterruptedSetup
  Call RefuseDowngrade
  Call RefuseUnusableFolder
  Call ChooseParts
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
LangString ABOUT_RENDERER 1033 "A small renderer for LUTs, CDLs and .look files, for the host program."
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
  Call un.RefuseSecondInstance
  ReadRegStr $R1 HKLM "${UNINSTALL_KEY}" "InstallLocation"
  Call un.SpellFolderAs
FunctionEnd

; Leaves the function when the entry is there and leads to another copy of the plug-in, with the path
; of that in $R1.
!macro ReturnOtherCopy key
  ReadRegStr $R1 HKLM "${CLASSES}\${key}" ""
  ${If} $R1 != ""
    Call un.IsOwnCopy
    ${If} $R0 == ""
      Return
    ${EndIf}
  ${EndIf}
!macroend

; $R0: not empty when the path in $R1 leads to the plug-in in $INSTDIR, or would if it were still there.
Function un.IsOwnCopy
  ${GetFileName} $R1 $R0
  ${If} $R0 != "GlazelDX_x64.dll"
    StrCpy $R0 ""
    Return
  ${EndIf}
  StrCpy $0 $INSTDIR
  Call un.GetIdentity
  StrCpy $R2 $R0
  ${GetParent} $R1 $0
  Call un.GetIdentity
  ${If} $R0 != $R2
    StrCpy $R0 ""
  ${EndIf}
FunctionEnd

; $R1: a copy of the plug-in outside $INSTDIR that is registered; empty without one. An entry that is
; missing says nothing: somebody may have taken out a part.
Function un.FindOtherCopy
  !insertmacro ReturnOtherCopy "${EFFECT_CLASS}\InprocServer32"
  !insertmacro ReturnOtherCopy "${PAGE_CLASS}\InprocServer32"
  !insertmacro ReturnOtherCopy "${TYPE_LIBRARY}\409\win64"
  StrCpy $R1 ""
FunctionEnd

; A file that somebody runs, or a DLL that somebody has loaded, cannot be opened for writing. Whatever
; else keeps it from being opened is told of by whoever deletes it.
!macro RefuseWhenInUse file
  StrCpy $0 "$INSTDIR\${file}"
  System::Call 'kernel32::CreateFileW(w r0, i 0x40000000, i 7, p 0, i 3, i 0, p 0) p .r1 ?e' ; to write
  Pop $0
  ${If} $1 P<> -1 ; INVALID_HANDLE_VALUE
    System::Call 'kernel32::CloseHandle(p r1)'
  ${ElseIf} $0 = 32 ; ERROR_SHARING_VIOLATION
    !insertmacro Fail ${CODE_IN_USE} "$INSTDIR\${file} is in use. Close the video editor and every other program that uses it, then try again."
  ${EndIf}
!macroend

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
  !insertmacro EachClassKey NoteEntry
  !insertmacro NoteEntry "${TYPE_LIBRARY}"
  !insertmacro EachInterfaceKey NoteInterface ""
  ClearErrors
FunctionEnd

; Takes the classes out of the registry unless another copy is registered.
Function un.Unregister
  Call un.FindOtherCopy
  ${If} $R1 != ""
    !insertmacro Log "not registered from here but from '$R1': left alone"
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
  ; KEY_QUERY_VALUE
  System::Call 'advapi32::RegOpenKeyExW(p ${HKEY_LOCAL_MACHINE}, w "${UNINSTALL_KEY}", i 0, i 1, *p .r1) i .r0'
  ${If} $0 <> 2 ; ERROR_FILE_NOT_FOUND
    StrCpy $Problem ${CODE_FILES}
    !insertmacro Log "the entry in the list of installed programs cannot be removed"
  ${EndIf}
FunctionEnd

!macro RemoveFile name part
  ClearErrors
  Delete "$INSTDIR\${name}"
  ${If} ${Errors}
    StrCpy $Problem ${CODE_FILES}
    !insertmacro Log "$INSTDIR\${name} cannot be deleted"
  ${EndIf}
!macroend

Section "Uninstall"
  StrCpy $Problem 0
  !insertmacro RefuseWhenInUse "GlazelDX_x64.dll"
  !insertmacro RefuseWhenInUse "GZ3Renderer_x64.dll"
  !insertmacro RefuseWhenInUse "glazelhost.exe"
  Call un.Unregister
  !insertmacro EachKnownFile RemoveFile
  !insertmacro RemoveKnownFolders
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
