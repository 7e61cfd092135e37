'use strict';

module.exports = { ...require('./functions'), ...require('./session') };
