export * from './functions';
export * from './records';
export * from './session';

/**
 * Opens the log (without a path: in the user's local application data folder), runs `action` on this thread and cleans up,
 * when `action` is asynchronous after what it promises.
 */
export function withSession<T>(logPath: string | null | undefined, action: () => T): T;
/** Watches the Escape key while `action` runs, when it is asynchronous until what it promises. */
export function withCancelMonitor<T>(action: () => T): T;
