import * as functions from './functions';
import { TargetRecord, WindowHandle } from './records';

type Functions = typeof functions;

export interface SessionOptions {
  /** The log's file; without it the one in the user's local application data folder. */
  log?: string;
}

export interface WindowName {
  title?: string | RegExp;
  className?: string;
  /** The file name of the process, as `order_form.exe`; upper and lower case are the same. */
  process?: string;
  /** How long the window is waited for, in milliseconds; 5000 unless told. */
  timeoutMs?: number;
}

/**
 * From the opening of the log to the clean-up. Its calls run one after the other in a thread of its own, so that nothing
 * blocks the event loop. With `await using` it closes itself.
 */
export class Session {
  private constructor();
  static open(options?: SessionOptions): Promise<Session>;
  /** Opens a session for as long as `action` takes. */
  static use<T>(options: SessionOptions, action: (session: Session) => T | Promise<T>): Promise<T>;
  /** Calls one of the 54 functions in the session's thread, as `session.call('sendCtrlS')`. */
  call<Name extends keyof Functions>(
    name: Name,
    ...values: Parameters<Functions[Name]>
  ): Promise<ReturnType<Functions[Name]>>;
  /** Ends the session after the calls that were made. A second time does nothing. */
  close(): Promise<void>;
  /**
   * The only visible top-level window of that name, waited for.
   * @throws {NotFoundError} There is none in time.
   * @throws {InvalidArgumentError} There are several.
   */
  window(name: WindowName): Promise<Window>;
  /** The window of a handle. */
  windowOf(handle: WindowHandle): Window;
  /** The window that the user clicks next; null when the mouse cannot be watched. */
  pickWindow(): Promise<Window | null>;
  /**
   * The target of a step, by its name or its number from 1, in a recording of the companion program.
   * @throws {NotFoundError} Its window is not there.
   */
  targetOfStep(file: string, step: string | number, options?: { timeoutMs?: number }): Promise<Target>;
  /** Watches the Escape key: what runs then can end with a CancelledError. */
  watchEscape(): Promise<void>;
  ignoreEscape(): Promise<void>;
}

export class Window {
  private constructor();
  readonly session: Session;
  readonly handle: WindowHandle;
  /** Its title and the file name of its process, as they are now. */
  info(): Promise<{ title: string; processName: string }>;
  /** Brings it to the foreground. */
  focus(): Promise<void>;
  /** The element at a point of the screen, in pixels. */
  targetAt(x: number, y: number): Promise<Target>;
  /** The element under the mouse. */
  targetAtCursor(): Promise<Target>;
  /** The element of a record that was kept. */
  target(record: TargetRecord): Target;
}

export class Target {
  private constructor();
  readonly window: Window;
  /** What a host stores to find the element again. */
  readonly record: TargetRecord;
  /** Finds it anew and clicks it. Two calls are two clicks, never a double click. */
  click(): Promise<void>;
  /**
   * Puts the text on the clipboard, clicks, pastes, and waits until the text shows; 3000 ms unless told.
   * @throws {FailedError} The text did not show in time.
   */
  paste(text: string, options?: { timeoutMs?: number }): Promise<void>;
  /** Clicks and types the text key by key. */
  type(text: string, options?: { pauseMs?: number }): Promise<void>;
  /** What it shows; null when no text can be read. */
  text(): Promise<string | null>;
  /**
   * Waits until it shows the text, or with `exact` nothing else; 3000 ms unless told.
   * @throws {FailedError} Time ran out.
   */
  wait(text: string, options?: { timeoutMs?: number; exact?: boolean }): Promise<void>;
  /** Whether it shows the text, or with `exact` nothing else. */
  check(text: string, options?: { exact?: boolean }): Promise<boolean>;
}
