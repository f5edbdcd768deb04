; SPDX-License-Identifier: MIT
; The installer: the content of the zip, registered, and an uninstaller that takes both back.
;   makensis -DVERSION=1.0.0 -DCONTENT=folder -DOUTPUT=file installer.nsi
Unicode true
Target amd64-unicode
!define NAME "Tessary Subtitle Converter"
!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\TessarySubtitleConverter"

Name "${NAME} ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES64\${NAME}"
RequestExecutionLevel admin
SetCompressor /SOLID lzma
VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "${NAME}"
VIAddVersionKey "FileDescription" "${NAME}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" ""

Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

Section
  SetRegView 64
  SetOutPath "$INSTDIR"
  File /r "${CONTENT}/*"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  ExecWait '"$SYSDIR\regsvr32.exe" /s "$INSTDIR\TXSubtitleConverter.ax"' $0
  IntCmp $0 0 registered
  MessageBox MB_OK|MB_ICONSTOP "The module could not be registered (regsvr32 said $0)." /SD IDOK
  SetErrorLevel 1
registered:
  WriteRegStr HKLM "${UNINSTALL}" "DisplayName" "${NAME}"
  WriteRegStr HKLM "${UNINSTALL}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL}" "UninstallString" '"$INSTDIR\uninstall.exe"'
SectionEnd

Section "Uninstall"
  SetRegView 64
  ExecWait '"$SYSDIR\regsvr32.exe" /s /u "$INSTDIR\TXSubtitleConverter.ax"'
  Delete "$INSTDIR\TXSubtitleConverter.ax"
  Delete "$INSTDIR\txgraph.exe"
  Delete "$INSTDIR\txsub.exe"
  Delete "$INSTDIR\register.cmd"
  Delete "$INSTDIR\unregister.cmd"
  Delete "$INSTDIR\LICENSE"
  Delete "$INSTDIR\TXSubtitleConverter.spdx"
  RMDir /r "$INSTDIR\include"
  RMDir /r "$INSTDIR\docs"
  RMDir /r "$INSTDIR\notices"
  RMDir /r "$INSTDIR\examples"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  DeleteRegKey HKLM "${UNINSTALL}"
SectionEnd
