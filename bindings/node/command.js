#!/usr/bin/env node
// korvane: the companion program of this package.
'use strict';

const path = require('path');
const { spawnSync } = require('child_process');

const { status, error } = spawnSync(path.join(__dirname, 'korvane.exe'), process.argv.slice(2), { stdio: 'inherit' });
if (error) console.error(`korvane: ${error.message}`);
process.exitCode = status ?? 1;
