@rem SPDX-License-Identifier: MIT
@echo off
rem Registers the module in this folder. Run as administrator.
regsvr32 "%~dp0TXSubtitleConverter.ax"
