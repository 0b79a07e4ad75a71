// Local file paths of the pictures and files a document refers to.
#pragma once
