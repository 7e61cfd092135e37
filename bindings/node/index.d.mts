import * as korvane from './index.js';

export * from './index.js';
export default korvane;
