@rem SPDX-License-Identifier: MIT
@echo off
rem Takes the registration back. Run as administrator.
regsvr32 /u "%~dp0TXSubtitleConverter.ax"
