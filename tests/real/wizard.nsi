; An installer as others write them: licence, components, folder, progress, a question, the end.
Unicode true
Name "Sample"
OutFile "${OUT}"
InstallDir "C:\Sample"
RequestExecutionLevel user
ManifestDPIAware true

!include MUI2.nsh
!define MUI_LICENSEPAGE_CHECKBOX
!insertmacro MUI_PAGE_LICENSE "${LICENCE}"
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_LANGUAGE English

!macro WriteText FILE TEXT
  SetOutPath $INSTDIR
  FileOpen $0 "$INSTDIR\${FILE}" w
  FileWrite $0 "${TEXT}"
  FileClose $0
!macroend

Section "Program"
  SectionIn RO
  !insertmacro WriteText program.txt program
SectionEnd

Section "Samples"
  !insertmacro WriteText samples.txt samples
SectionEnd

Section "Help"
  !insertmacro WriteText help.txt help
SectionEnd

Section
  MessageBox MB_YESNO|MB_ICONQUESTION "Keep a note of this installation?" IDNO done
  !insertmacro WriteText note.txt note
  done:
SectionEnd
