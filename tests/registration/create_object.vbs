' Prints what CreateObject and a property of the new object answer to a script.
' The script control lends the object a site with services, as browsers and editors do; the bare
' command-line host of some systems does not, and then refuses every object that takes a site.
Option Explicit
Dim host, code
code = "Function Tried(name)" & vbLf & _
       "  On Error Resume Next" & vbLf & _
       "  Dim made, progress" & vbLf & _
       "  Set made = CreateObject(name)" & vbLf & _
       "  Tried = ""create "" & Hex(Err.Number)" & vbLf & _
       "  Err.Clear" & vbLf & _
       "  made.Progress = 0.25" & vbLf & _
       "  Tried = Tried & "" put "" & Hex(Err.Number)" & vbLf & _
       "  Err.Clear" & vbLf & _
       "  progress = made.Progress" & vbLf & _
       "  Tried = Tried & "" get "" & Hex(Err.Number) & "" value "" & progress" & vbLf & _
       "End Function"
Set host = CreateObject("MSScriptControl.ScriptControl")
host.Language = "VBScript"
host.AddCode code
WScript.Echo host.Run("Tried", WScript.Arguments(0))
