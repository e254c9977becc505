export const LINK = "spotify:track:3Bv2coKkW2f26EGHu2IofY"; // "Ropes and Tar", of the demo library
