// @ts-check

import { byId, icon, replace } from "../page/dom.js";
import { attempt } from "../music/library.js";
import { signIn } from "../music/session.js";

/** @type {() => HTMLInputElement} */
const nameField = () => byId("name");
/** @type {() => HTMLInputElement} */
const passwordField = () => byId("password");

export function startSignIn() {
    nameField().value = attempt(() => localStorage.getItem("name"), null) || "";
    byId("signin-form").addEventListener("submit", (event) => {
        event.preventDefault();
        const [name, password] = [nameField(), passwordField()];
        const missing = [name, password].find((field) => field.value === "");
        if (missing) {
            say(missing === name ? "Enter your name." : "Enter your password.");
            missing.focus();
            return;
        }
        wait(true);
        const remembered = /** @type {HTMLInputElement} */ (byId("remember")).checked;
        attempt(() => localStorage.setItem("name", name.value), undefined);
        signIn(name.value, password.value, remembered);
        password.value = "";
    });
}

/**
 * @param {string} why nobody is signed in; "" says nothing
 * @param {boolean} [hopeless] there is nothing to fill in
 */
export function showSignIn(why, hopeless = false) {
    byId("signin").hidden = false;
    byId("signin-form").classList.remove("remembered");
    byId("signin-form").classList.toggle("hopeless", hopeless);
    wait(false);
    say(why);
    const field = nameField().value === "" ? nameField() : passwordField();
    field.focus();
    document.documentElement.dataset.ready = "true";
}

/**
 * What the service says while nobody is signed in, such as who may be.
 * @param {string} message
 */
export function showGreeting(message) {
    byId("signin-hint").textContent = message;
}

/** While the remembered user is signed in. That is mostly done before there is time to see it. */
export function showSigningIn() {
    setTimeout(() => {
        if (byId("signin").hidden && byId("app").hidden) {
            byId("signin").hidden = false;
            byId("signin-form").classList.add("remembered");
            wait(true);
        }
    }, 500);
}

/** @param {boolean} waiting */
function wait(waiting) {
    const button = /** @type {HTMLButtonElement} */ (byId("signin-button"));
    button.disabled = waiting;
    button.textContent = waiting ? "Signing in …" : "Sign in";
    say("");
}

/** @param {string} message */
function say(message) {
    replace(byId("signin-error"), message && icon("alert"), message);
    for (const field of [nameField(), passwordField()]) {
        field.setAttribute("aria-invalid", String(message !== ""));
    }
}
