// Prints what the command-line script host itself, without any services for its objects, answers
// when a script asks for a class: 0 or the number of the error.
var number = 0;
try {
    new ActiveXObject(WScript.Arguments.Item(0));
} catch (error) {
    number = error.number & 0xFFFF;
}
WScript.Echo("create " + number);
